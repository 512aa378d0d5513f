"""Serves the folder pages beside this file to browsers, and keeps what the pages say."""

import http.server
import threading
from pathlib import Path

PAGES = Path(__file__).parent / "pages"


class PageServer:
    def __init__(self):
        said = self.said = []

        class Handler(http.server.SimpleHTTPRequestHandler):
            def __init__(self, *arguments):
                super().__init__(*arguments, directory=str(PAGES))

            def do_POST(self):  # pylint: disable=invalid-name
                said.append(self.rfile.read(int(self.headers["Content-Length"])).decode())
                self.send_response(204)
                self.end_headers()

            def log_message(self, *_):  # pylint: disable=arguments-differ
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._thread = threading.Thread(target=self._server.serve_forever, daemon=True)
        self._thread.start()

    def address(self, page):
        return f"http://127.0.0.1:{self._server.server_port}/{page}"

    def close(self):
        self._server.shutdown()
        self._server.server_close()
        self._thread.join()

    def frames(self):
        """The newest number of frames that a page has told; 0 before the first."""
        return next((int(words.split()[1]) for words in reversed(self.said) if words.startswith("frames ")), 0)
