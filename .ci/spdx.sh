#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
# Licence tags of the source and build files.
#
#   .ci/spdx.sh --check   lists every file without the tag; fails when any lacks it
#   .ci/spdx.sh --fix     adds the tag where it is missing (idempotent)
#
# Covered: *.c *.cpp *.h *.inc *.S *.cmake *.sh *.in *.map, CMakeLists.txt and
# the scripts under .ci/. Build folders (build*/, out/) and the fuzz corpus
# are skipped. The tag is a comment in the file's own syntax, on the first
# line, or the second after a "#!" line.
set -euo pipefail

mode=${1:-}
if [ "$mode" != --check ] && [ "$mode" != --fix ]; then
  echo "usage: $0 --check|--fix [SOURCE_DIR]" >&2
  exit 2
fi
root=${2:-"$(cd "$(dirname "$0")/.." && pwd)"}
cd "$root"
tag="SPDX-License-Identifier: BSD-3-Clause"

list_files() {
  if git rev-parse --is-inside-work-tree > /dev/null 2>&1; then
    # Tracked files and new files not yet added, without ignored ones.
    git ls-files --cached --others --exclude-standard -z | tr '\0' '\n'
  else
    find . -path ./.git -prune -o -path './build*' -prune -o -path ./out -prune -o -type f -print | sed 's|^\./||'
  fi
}

# Prints the comment form of the tag for a file, or nothing when the file is
# not covered.
tag_line() {
  case "$1" in
    fuzz/corpus/* | build*/* | out/*) ;;
    *.cpp | *.inc) echo "// $tag" ;;
    *.c | *.h | *.S | *.map) echo "/* $tag */" ;;
    *.cmake | *.sh | *.in | CMakeLists.txt | */CMakeLists.txt) echo "# $tag" ;;
    .ci/*.txt) ;;
    .ci/*) head -c 2 "$1" | grep -q '^#!' && echo "# $tag" ;;
  esac
}

missing=0
while IFS= read -r f; do
  [ -f "$f" ] || continue
  line=$(tag_line "$f") || true
  [ -n "$line" ] || continue
  # The tag counts only near the top (first five lines).
  if head -n 5 "$f" | grep -q "$tag"; then
    continue
  fi
  if [ "$mode" = --check ]; then
    echo "no licence tag: $f"
    missing=$((missing + 1))
  else
    tmp=$(mktemp)
    if head -c 2 "$f" | grep -q '^#!'; then
      { head -n 1 "$f"; echo "$line"; tail -n +2 "$f"; } > "$tmp"
    else
      { echo "$line"; cat "$f"; } > "$tmp"
    fi
    cat "$tmp" > "$f"   # keeps the file's mode
    rm -f "$tmp"
    echo "tagged: $f"
  fi
done < <(list_files | LC_ALL=C sort)

if [ "$mode" = --check ] && [ "$missing" -gt 0 ]; then
  echo "$missing file(s) without '$tag'; run .ci/spdx.sh --fix" >&2
  exit 1
fi
exit 0
