#!/usr/bin/env bash
# Installs every Debian package the build, the tests and the tools need, when missing, and the
# browser tests' node packages (package-lock.json) when node_modules is missing or stale.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  build-essential cmake pkg-config
  ccache                        # keeps compiled objects between builds, clones and work trees
  python3                       # the benchmarks' comparison (bench/compare.py) and make_icons.py
  libplist-dev                  # property lists, XML and binary
  libicu-dev                    # the regular expressions of NSRegularExpression
  libstb-dev                    # image decoding (JPEG, GIF, BMP, ...)
  libpng-dev                    # PNG read and written a row at a time
  libboost-dev                  # Boost.Beast: the browser host's HTTP server
  libcpp-httplib-dev            # the tests' HTTP client
  nlohmann-json3-dev            # JSON for the script and browser hosts
  libgtest-dev                  # unit and end-to-end tests
  libbenchmark-dev              # benchmarks
  libmimalloc-dev               # the programs' allocator
  chromium                      # the browser tests' headless browser
  clang libclang-rt-dev         # the sanitized build and the fuzz targets (libFuzzer, the sanitizers' runtimes)
)
# Node.js runs the browser tests; the machine's own (any packaging) will do.
command -v node >/dev/null 2>&1 || packages+=(nodejs npm)

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

# playwright-core and axe-core for the browser tests, exactly as package-lock.json pins them
# (never a browser download: the tests drive Debian's Chromium).
lock_sum=$(sha256sum package-lock.json | cut -d' ' -f1)
stamp=node_modules/.nimbra-package-lock.sha256
if [ ! -f "$stamp" ] || [ "$(cat "$stamp")" != "$lock_sum" ]; then
  echo "bootstrap: installing the browser tests' node packages"
  PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 npm ci --no-audit --no-fund --loglevel=error
  echo "$lock_sum" > "$stamp"
fi
