#!/usr/bin/python3
"""Fails if a file of Source or of the simulated phone includes upwards.

A file may include its own room and the rooms of lower layers. Rooms of one layer do not include each other.
Documentation/structure.md shows the same table.
"""
import pathlib
import re
import sys

LAYERS = [  # lowest first
    ["Public/VLExport.h", "Public/VLTypes.h"],
    ["Public/VLValue.h"],
    ["Platform"],
    ["Public"],
    ["Categories"],
    ["Core/Base"],
    ["Network"],
    ["Tracking"],
    ["Notifications"],
    ["Inbox", "Beacons"],
    ["Geo"],
    ["Core/Startup"],
]
# Implementations of the platform: each stands on these rooms alone, and only the exceptions below include it.
PLATFORMS = {
    "Platform/Linux": ["Platform", *LAYERS[0], *LAYERS[1]],
    "Simulator/Platform": ["Platform", "Public", "Platform/Linux", *LAYERS[0], *LAYERS[1]],
}
# A file that includes upwards by design, and the one header that it includes.
EXCEPTIONS = {
    "Platform/Platform.cpp": "Platform/Linux/LinuxPlatform.h",  # makes the default platform
    "Categories/NSDictionary+VLJSON.cpp": "Core/Base/VLError.h",  # reports why a string is no JSON
    "Network/VLURLActions.cpp": "Notifications/VLPermissionService.h",  # a link may ask for a permission
    "Tracking/VLSessionService.cpp": "Notifications/VLRemoteNotificationService.h",  # a session start registers for push
}

ROOT = pathlib.Path(__file__).resolve().parent.parent
RANKS = {room: rank for rank, rooms in enumerate(LAYERS) for room in rooms}
ROOMS = sorted([*RANKS, *PLATFORMS], key=len, reverse=True)


def room_of(path):
    return next((room for room in ROOMS if path == room or path.startswith(room + "/")), None)


def may_include(source, target):
    if source == target:
        return True
    if source in PLATFORMS:
        return target in PLATFORMS[source]
    return source in RANKS and target in RANKS and RANKS[target] < RANKS[source]


def includes():
    for folder, base in ((ROOT / "Source", ROOT / "Source"), (ROOT / "Simulator/Platform", ROOT)):
        for file in sorted([*folder.rglob("*.h"), *folder.rglob("*.cpp")]):
            for header in re.findall(r'^#include "([^"]+)"', file.read_text(), re.MULTILINE):
                yield file.relative_to(base).as_posix(), header


def documented_rooms():
    """Returns the rooms of each row of the table in the documentation, lowest first."""
    text = (ROOT / "Documentation/structure.md").read_text()
    table = text.split("| Layer | Rooms |\n|---|---|\n")[-1].split("\n\n")[0]
    return [re.findall(r"`([^`]+)`", row.split("|")[2]) for row in table.splitlines()]


upwards = {(file, header) for file, header in includes() if not may_include(room_of(file), room_of(header))}
errors = [f"{file} includes {header}, which is not below it" for file, header in sorted(upwards - EXCEPTIONS.items())]
errors += [f"{file} no longer includes {header}" for file, header in EXCEPTIONS.items() - upwards]
if documented_rooms() != LAYERS + [[room] for room in PLATFORMS]:
    errors.append("Documentation/structure.md shows other layers")
if errors:
    print("\n".join(errors))
sys.exit(bool(errors))
