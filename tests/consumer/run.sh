#!/usr/bin/env bash
# Builds the consumer project against qor twice: installed (find_package) and as a subdirectory.
# Usage: run.sh <qor-source-dir> <qor-build-dir> <work-dir> [extra cmake args...]
set -euo pipefail
src=$1 build=$2 work=$3
shift 3
rm -rf "$work"
cmake --install "$build" --prefix "$work/prefix" > /dev/null
cmake -S "$src/tests/consumer" -B "$work/installed" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" "$@" > /dev/null
cmake --build "$work/installed" > /dev/null
"$work/installed/consumer"
PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig" pkg-config --cflags --libs qor
cmake -S "$src/tests/consumer" -B "$work/subdir" -G Ninja -DQOR_SOURCE_DIR="$src" "$@" > /dev/null
cmake --build "$work/subdir" > /dev/null
"$work/subdir/consumer"
