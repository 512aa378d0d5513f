"""What benchmarks measured: a line for people, and a place in the file that CURTAIN_FIGURES names, for scripts/compare-figures."""

import datetime
import json
import os
import subprocess
from pathlib import Path


def _measured_on():
    commit = subprocess.run(["git", "describe", "--always", "--dirty", "--exclude=*"], capture_output=True, text=True, check=False,
                            cwd=Path(__file__).parent).stdout.strip()
    models = [line.partition(":")[2].strip() for line in Path("/proc/cpuinfo").read_text().splitlines() if line.startswith("model name")]
    return {"commit": commit, "date": datetime.date.today().isoformat(), "machine": models[0] if models else os.uname().machine,
            "processors": os.cpu_count(), "load": round(os.getloadavg()[0], 1)}


def keep(name, figure):
    """Replaces what an earlier run measured under the name. Benchmarks run one after the other."""
    path = os.environ.get("CURTAIN_FIGURES")
    if not path:
        return
    file = Path(path)
    kept = json.loads(file.read_text()) if file.exists() else {}
    kept[name] = figure | _measured_on()
    file.write_text(json.dumps(kept, indent=1, sort_keys=True) + "\n")


def line(name, figure):
    unit = f" {figure['unit']}" if figure["unit"] else ""
    text = f"{name}: {figure['value']:g}{unit}"
    remarks = [f"{what}: {value:g}" for what, value in figure["beside"].items()]
    if figure["goal"] is not None:
        remarks.insert(0, f"goal: {figure['goal']:g}" + (", missed" if figure["value"] > figure["goal"] else ""))
    return text + (f" ({'; '.join(remarks)})" if remarks else "")


def report(name, value, unit="", goal=None, **beside):
    """`goal` is the most that the value may be; `beside` are the same figure of others, by their names."""
    figure = {"value": round(value, 3), "unit": unit, "goal": goal,
              "beside": {what.replace("_", " "): round(other, 3) for what, other in beside.items()}}
    print(line(name, figure), flush=True)
    keep(name, figure)
