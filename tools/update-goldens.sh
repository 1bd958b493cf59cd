#!/usr/bin/env bash
# Regenerates the golden images that the tests compare against, from the tests' own output.
# Usage: tools/update-goldens.sh [build-dir]   (default build/debug-asan; it must be configured)
#
# The golden tests (those with "Golden" in their name) write <name>.actual.png under
# <build-dir>/tests/golden-actual/<family>/ when their output differs from tests/golden/<family>/<name>.png
# or the golden is missing. This script builds, runs those tests, and copies each actual image over its
# golden. Review the result with `git diff --stat tests/golden` and by looking at the images.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-"$root/build/debug-asan"}
[[ -d "$build" ]] || { echo "update-goldens: no build directory $build (configure it first)" >&2; exit 1; }

cmake --build "$build"
actual="$build/tests/golden-actual"
rm -rf "$actual"
(cd "$build" && ctest -R Golden --output-on-failure > /dev/null) || true

count=0
if [[ -d "$actual" ]]; then
    while IFS= read -r -d '' file; do
        rel=${file#"$actual"/}
        dest="$root/tests/golden/${rel%.actual.png}.png"
        mkdir -p "$(dirname "$dest")"
        cp "$file" "$dest"
        echo "updated tests/golden/${rel%.actual.png}.png"
        count=$((count + 1))
    done < <(find "$actual" -name '*.actual.png' -print0)
fi
echo "update-goldens: $count golden image(s) updated"

# docs/getting-started.md shows the example's screenshots: the same files as their goldens.
for name in screen mosaic; do
    golden="$root/tests/golden/examples/getting-started-$name.png"
    if [[ -f "$golden" ]] && ! cmp -s "$golden" "$root/docs/getting-started-$name.png"; then
        cp "$golden" "$root/docs/getting-started-$name.png"
        echo "updated docs/getting-started-$name.png"
    fi
done

# Check: the golden tests pass now.
(cd "$build" && ctest -R Golden --output-on-failure)
