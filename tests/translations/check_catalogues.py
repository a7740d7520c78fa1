#!/usr/bin/env python3
"""Fails when a tr() text of the sources is missing from a translation catalogue,
or when a catalogue that must be complete leaves a message untranslated.

Runs lupdate over the source folders into a scratch catalogue and checks that
every (context, source) pair it finds is a live entry (not vanished/obsolete)
of each committed catalogue. Fix a failure with: cmake --build build --target lupdate
Then every live message of the catalogues named by --finished (Japanese and
Chinese: the English one is the source language) must carry a translation that
is not marked unfinished."""
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


def unfinished(ts_path):
    """(context, source) of every live message without a finished translation."""
    found = []
    for context in ET.parse(ts_path).getroot().iter("context"):
        name = context.findtext("name")
        for message in context.iter("message"):
            translation = message.find("translation")
            kind = translation.get("type") if translation is not None else "unfinished"
            if kind in ("vanished", "obsolete"):
                continue
            numerus = translation is not None and len(translation.findall("numerusform")) > 0
            empty = translation is None or (not numerus and not (translation.text or "").strip())
            if kind == "unfinished" or empty:
                found.append((name, message.findtext("source")))
    return found


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--lupdate", required=True)
    parser.add_argument("--root", required=True)
    parser.add_argument("--dirs", nargs="+", required=True)
    parser.add_argument("--ts", nargs="+", required=True)
    parser.add_argument("--finished", nargs="*", default=[],
                        help="catalogues in which every message must be translated")
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
    for ts in args.finished:
        open_messages = unfinished(ts)
        for context, source in open_messages:
            print(f"{os.path.basename(ts)}: unfinished [{context}] {source!r}")
        print(f"{os.path.basename(ts)}: {len(open_messages)} unfinished")
        failed = failed or bool(open_messages)
    print(f"{len(wanted)} texts checked against {len(args.ts)} catalogues")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
