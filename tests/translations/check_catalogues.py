#!/usr/bin/env python3
"""Fails when a tr() text of the sources is missing from a translation catalogue.

Runs lupdate over the source folders into a scratch catalogue and checks that
every (context, source) pair it finds is a live entry (not vanished/obsolete)
of each committed catalogue. Fix a failure with: cmake --build build --target lupdate"""
import argparse
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET


def entries(ts_path, live_only):
    found = set()
    for context in ET.parse(ts_path).getroot().iter("context"):
        name = context.findtext("name")
        for message in context.iter("message"):
            translation = message.find("translation")
            kind = translation.get("type") if translation is not None else None
            if live_only and kind in ("vanished", "obsolete"):
                continue
            found.add((name, message.findtext("source")))
    return found


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--lupdate", required=True)
    parser.add_argument("--root", required=True)
    parser.add_argument("--dirs", nargs="+", required=True)
    parser.add_argument("--ts", nargs="+", required=True)
    args = parser.parse_args()

    dirs = [d for d in args.dirs if os.path.isdir(os.path.join(args.root, d))]
    with tempfile.TemporaryDirectory() as scratch:
        fresh = os.path.join(scratch, "fresh.ts")
        subprocess.run([args.lupdate, "-silent", "-locations", "none", "-extensions", "cpp,h",
                        *dirs, "-ts", fresh], cwd=args.root, check=True)
        wanted = entries(fresh, live_only=False)
    if not wanted:
        print("lupdate found no translatable texts; is the source list right?")
        return 1

    failed = False
    for ts in args.ts:
        missing = sorted(wanted - entries(ts, live_only=True))
        for context, source in missing:
            print(f"{os.path.basename(ts)}: missing [{context}] {source!r}")
        failed = failed or bool(missing)
    print(f"{len(wanted)} texts checked against {len(args.ts)} catalogues")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
