# Sourced by the other scripts: installs the Debian packages that are missing.
#   need "building the library" cmake ninja-build g++
need() {
  local why=$1 package missing=()
  shift
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if ! command -v apt-get >/dev/null; then
    echo "Missing for $why: ${missing[*]} (Debian's names). Install them, then run this again." >&2
    exit 1
  fi
  echo "Installing for $why: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then as_root=(sudo); fi
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >/dev/null
}

need_for_build() {
  need "building the library" cmake ninja-build g++ pkg-config libopencv-core-dev libopencv-imgproc-dev \
    hershey-fonts-data
  need "building the zrv command line" libcli11-dev nlohmann-json3-dev libcairo2-dev libturbojpeg0-dev \
    libmicrohttpd-dev
}

# Compilations are cached when ccache is there.
cache_options() {
  if command -v ccache >/dev/null; then echo "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache"; fi
}
