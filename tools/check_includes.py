#!/usr/bin/env python3
"""Holds the includes of the given sources against the layers of docs/architecture.md.

Usage: tools/check_includes.py SOURCE...     (paths from the root of the project)
"""

import os
import re
import sys

# A folder with everything below it, and what it may include besides itself: folders with their own
# row, or single headers.
LAYERS = {
    "platform/base": "",
    "platform/text": "",
    "platform/win32": "platform/Export.h platform/text",
    "platform/win32/posix": "platform/Export.h platform/win32 platform/text",
    "platform/classlib": "platform/Export.h platform/win32",
    "include": "platform/Export.h platform/classlib",
    "files": "include platform/classlib platform/win32 platform/text",
    "archive": "include files platform/classlib platform/win32 platform/text",
    "volume": "include files platform/classlib platform/win32 platform/text",
    "engine/codec": "",
    "engine/container": "engine/codec platform/win32 platform/text",
    "engine/sfx": "engine/codec engine/container platform/text",
    "engine/commands": "engine/codec engine/container engine/sfx platform/win32 platform/text",
    "engine/api": "engine/commands engine/container platform/win32",
    "kozor": "include engine/container volume/VolumeFormat.h platform/classlib platform/win32 platform/text",
    "examples": "include platform/win32",
    "bench": "include engine/codec tests/codec tests/support",
    "fuzz": "include engine/codec engine/commands engine/container engine/sfx platform/base "
            "platform/classlib platform/text platform/win32 tests/codec tests/engine tests/support volume",
    "tests/support": "platform/win32 platform/win32/posix",
    "tests/platform": "platform/text platform/win32 platform/win32/posix tests/support",
    "tests/classlib": "platform/classlib platform/win32 tests/support",
    "tests/files": "files include platform/classlib platform/win32 tests/support",
    "tests/archive": "archive files include platform/classlib platform/win32 tests/support",
    "tests/volume": "volume files include platform/classlib platform/win32 tests/support",
    "tests/codec": "engine/codec tests/support",
    "tests/engine": "engine/api engine/commands engine/container engine/codec platform/win32 tests/support",
    "tests/sfx": "engine/sfx engine/container engine/codec tests/engine tests/support",
    "tests/exchange": "include platform/classlib tests/support",
    "tests/kozor": "kozor include tests/engine tests/support",
    "tests/faults": "tests/support",
}
# Open to every layer: they depend on nothing.
EVERYBODYS = {"platform/Export.h", "platform/base"}
INCLUDE = re.compile(r'\s*#\s*include\s*"([^"]+)"')


def layer_of(path):
    fitting = (folder for folder in LAYERS if path.startswith(folder + "/"))
    return max(fitting, key=len, default=None)


def wrong_includes(source):
    layer = layer_of(source)
    allowed = {layer, *EVERYBODYS, *LAYERS.get(layer, "").split()}
    with open(source, encoding="utf-8") as lines:
        for number, line in enumerate(lines, 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            header = match[1] if "/" in match[1] else "include/" + match[1]
            own = os.path.exists(os.path.join(layer or ".", match[1]))
            if not own and layer_of(header) not in allowed and header not in allowed:
                yield f"{source}:{number}: {layer or 'a folder without a row'} must not include {header}"


faults = [fault for source in sys.argv[1:] for fault in wrong_includes(source)]
print("\n".join(faults) or f"{len(sys.argv) - 1} files include what their layers allow")
sys.exit(bool(faults))
