#!/usr/bin/env python3
"""Makes a file of guard cases from a folder of real screenshots.

    scripts/screenshot_cases.py FOLDER

FOLDER/index.json lists under "images" each "file" with its "tap": {"label", "x", "y", "ask_owner"},
where "ask_owner" is yes or no; a picture of which it is not known is left out.
"""

import json
import sys
from pathlib import Path


def cases(folder: Path) -> list[dict]:
    result = []
    for image in json.loads((folder / "index.json").read_text())["images"]:
        tap = image.get("tap") or {}
        if tap.get("ask_owner") not in ("yes", "no"):
            continue
        result.append(
            {
                "name": f"{image['file']}: {tap['label']}",
                "category": "real screenshots",
                "language": image.get("language", ""),
                "asks": tap["ask_owner"] == "yes",
                "picture": str(folder.resolve() / image["file"]),
                "action": {"kind": "tap", "x": tap["x"], "y": tap["y"]},
            }
        )
    return result


if __name__ == "__main__":
    print(json.dumps({"cases": cases(Path(sys.argv[1]))}, ensure_ascii=False, indent=1))
