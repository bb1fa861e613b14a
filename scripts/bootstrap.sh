#!/usr/bin/env bash
# Installs every Debian package the build, the tests and the tools need, when missing.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libplist-dev libplist++-dev   # property lists, XML and binary
  libicu-dev                    # the regular expressions of NSRegularExpression
  libstb-dev                    # image decoding and PNG encoding
  libcpp-httplib-dev            # the browser host's HTTP server
  nlohmann-json3-dev            # JSON for the script and browser hosts
  libgtest-dev libgmock-dev     # unit and end-to-end tests
  libbenchmark-dev              # benchmarks
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if ((${#missing[@]})); then
  echo "bootstrap: installing ${missing[*]}"
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}"
fi
