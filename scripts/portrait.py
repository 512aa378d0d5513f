"""Draws what a camera sees before a call."""

import subprocess

# Someone before a wall with a window and shelves.
SCENERY = """
fill #c7dbe8 rectangle 120,0 390,400
fill #f7f3ec rectangle 248,0 262,400 rectangle 120,190 390,204
fill #8a6f57 rectangle 930,150 1190,166 rectangle 930,330 1190,346
fill #b5543f rectangle 950,60 985,150
fill #3f6f8a rectangle 990,80 1030,150
fill #d9a441 rectangle 1036,50 1066,150
fill #5d7f56 circle 1120,110 1120,150 ellipse 990,270 46,42 0,360
fill #a0522d roundrectangle 960,290 1020,330 6,6
fill #6b5b8f rectangle 1080,230 1112,330 rectangle 1118,250 1150,330
"""
PERSON = """
fill #2b201c ellipse 640,300 172,212 0,360 roundrectangle 468,300 812,560 90,90
fill #35526f roundrectangle 330,560 950,900 190,190
fill #d9a27e roundrectangle 575,440 705,625 60,60
fill #eab995 ellipse 640,335 118,158 0,360
fill #2b201c ellipse 640,205 132,66 0,360
fill #f2efe9 polygon 572,572 640,684 708,572 724,600 640,720 556,600
"""


def draw_portrait(path):
    """A JPEG of 1280x720."""
    subprocess.run(["convert", "-size", "1280x720", "gradient:#efe7dc-#d8cbbb",
                    "(", "-size", "1280x720", "xc:none", "-draw", SCENERY, "-blur", "0x7", ")", "-composite",
                    "(", "-size", "1280x720", "xc:none", "-draw", PERSON, ")", "-composite",
                    "-quality", "90", str(path)], check=True)
