#!/usr/bin/env bash
# Installs the build into a scratch prefix and checks what a desktop finds
# there: both programs, a launcher and a software-centre entry that pass the
# freedesktop validators, the icon at every theme size, and the man page.
# Usage: check_install.sh CMAKE BUILD_DIR
set -euo pipefail
cmake=$1
build=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
"$cmake" --install "$build" --prefix "$prefix" >/dev/null

fail=0
check() {
    if ! "$@"; then
        echo "FAIL: $*"
        fail=1
    fi
}
id=works.orvane.Tesk
for program in tesk tesk-scan; do
    check test -x "$prefix/bin/$program"
done
desktop="$prefix/share/applications/$id.desktop"
check test -f "$desktop"
check desktop-file-validate "$desktop"
check grep -q '^MimeType=.*inode/directory;.*audio/x-wav;' "$desktop"
check grep -q '^Exec=tesk %f$' "$desktop"
check appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml"
check test -f "$prefix/share/icons/hicolor/scalable/apps/$id.svg"
for size in 16 22 24 32 48 64 128 256; do
    png="$prefix/share/icons/hicolor/${size}x${size}/apps/$id.png"
    check test -f "$png"
    # The PNG header's width and height (bytes 16-23) must match the folder.
    if [ -f "$png" ]; then
        dims=$(od -An -tu1 -j16 -N8 "$png" | tr -s ' ' | sed 's/^ //')
        check test "$dims" = "0 0 $((size / 256)) $((size % 256)) 0 0 $((size / 256)) $((size % 256))"
    fi
done
man_page="$prefix/share/man/man1/tesk-scan.1"
check test -f "$man_page"
if command -v man >/dev/null; then
    warnings=$(MANWIDTH=80 man --warnings -l "$man_page" 2>&1 >/dev/null || true)
    check test -z "$warnings"
fi
if [ "$fail" -eq 0 ]; then
    echo "installed tree passes"
fi
exit "$fail"
