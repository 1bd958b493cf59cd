#!/usr/bin/env bash
# Installs the Debian packages qor builds, tests, documents and demonstrates with.
# Idempotent: when everything is present it only queries dpkg; it runs
# `apt-get update` only when something is missing.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    libsdl2-dev libsdl2-ttf-dev libsdl2-image-dev libfontconfig-dev
    fonts-arphic-bkai00mp fonts-arphic-ukai
    libsqlite3-dev
    googletest libgtest-dev libgmock-dev libbenchmark-dev
    xvfb clang
    doxygen
    x11-apps xauth
    alsa-utils
)

missing=()
for p in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$p")
done

if [[ ${#missing[@]} -eq 0 ]]; then
    exit 0
fi

echo "install-deps: installing ${missing[*]}"
if [[ $(id -u) -ne 0 ]]; then
    echo "install-deps: missing packages and not root; install them with apt-get: ${missing[*]}" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
