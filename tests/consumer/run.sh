#!/usr/bin/env bash
# Builds, links and runs the consumer project against qor by every route a program can take.
# Usage: run.sh <route> <qor-source-dir> <qor-build-dir> <work-dir> [extra cmake args for the installed route]
#   shared: installs the suite's build (a shared qor) and links the consumer through find_package and
#           through `pkg-config --cflags --libs qor`, then through add_subdirectory with a shared qor.
#   static: builds qor as a static library through add_subdirectory, installs that build, and links the
#           consumer through find_package and through `pkg-config --static --cflags --libs qor`.
# Each consumer must run and print its line; shared consumers must need libqor.so.<major>, static ones not.
set -euo pipefail
route=$1 src=$2 build=$3 work=$4
shift 4
rm -rf "$work"
mkdir -p "$work"

needs_qor() { readelf -d "$1" | grep -q 'NEEDED.*\[libqor\.so\.[0-9]*\]'; }
run() {
    local exe=$1 expect=$2
    "$exe"
    if [[ $expect == shared ]]; then
        needs_qor "$exe" || { echo "$exe does not load libqor.so" >&2; exit 1; }
    else
        ! needs_qor "$exe" || { echo "$exe loads libqor.so but was linked statically" >&2; exit 1; }
    fi
}
pkg_build() {
    local prefix=$1 out=$2 flags
    shift 2
    flags=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config "$@" --cflags --libs qor)
    echo "pkg-config $* --cflags --libs qor: $flags"
    # shellcheck disable=SC2086
    c++ -std=c++17 ${CONSUMER_CXXFLAGS:-} "$src/tests/consumer/main.cpp" -o "$out" $flags -Wl,-rpath,"$prefix/lib"
}

case $route in
shared)
    cmake --install "$build" --prefix "$work/prefix" > /dev/null
    lib=$(readlink -f "$work/prefix/lib/libqor.so")
    readelf -d "$lib" | grep -q 'SONAME.*\[libqor\.so\.[0-9]*\]' || { echo "$lib has no versioned SONAME" >&2; exit 1; }
    # Only the public API is exported: the internals and the standard library's instantiations stay local.
    exported=$(nm -D --defined-only "$lib" | c++filt)
    grep -q ' QorLoadPicture(' <<< "$exported" || { echo "$lib does not export QorLoadPicture" >&2; exit 1; }
    if grep -E '^[0-9a-f]+ [A-Za-z] ((void|bool|int|unsigned [a-z]+) )?(qor::detail::|std::)' <<< "$exported"; then
        echo "$lib exports internals" >&2
        exit 1
    fi
    cmake -S "$src/tests/consumer" -B "$work/installed" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" "$@" > /dev/null
    cmake --build "$work/installed" --parallel 1 > /dev/null
    run "$work/installed/consumer" shared
    CONSUMER_CXXFLAGS="${QOR_CONSUMER_CXXFLAGS:-}" pkg_build "$work/prefix" "$work/pkgconfig-consumer"
    run "$work/pkgconfig-consumer" shared
    cmake -S "$src/tests/consumer" -B "$work/subdir" -G Ninja -DQOR_SOURCE_DIR="$src" > /dev/null
    cmake --build "$work/subdir" --parallel 1 > /dev/null
    run "$work/subdir/consumer" shared
    ;;
static)
    cmake -S "$src/tests/consumer" -B "$work/subdir" -G Ninja -DQOR_SOURCE_DIR="$src" -DBUILD_SHARED_LIBS=OFF \
        -DQOR_INSTALL=ON > /dev/null
    cmake --build "$work/subdir" --parallel 1 > /dev/null
    run "$work/subdir/consumer" static
    cmake --install "$work/subdir" --prefix "$work/prefix" > /dev/null
    [[ -f "$work/prefix/lib/libqor.a" ]] || { echo "no libqor.a installed" >&2; exit 1; }
    cmake -S "$src/tests/consumer" -B "$work/installed" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" > /dev/null
    cmake --build "$work/installed" --parallel 1 > /dev/null
    run "$work/installed/consumer" static
    pkg_build "$work/prefix" "$work/pkgconfig-consumer" --static
    run "$work/pkgconfig-consumer" static
    ;;
*)
    echo "run.sh: unknown route $route" >&2
    exit 2
    ;;
esac
