# Shared by the scripts of this folder; sourced, not run.
# shellcheck shell=bash disable=SC2034 # the scripts that source this use what it sets

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# A script that sets `steps` to the number of its steps has each announced with its place among them, and with the
# minutes and seconds since the start.
step=0 steps=0
say() {
  step=$((step + 1))
  if [ "$steps" -gt 0 ]; then
    printf '\n== %d/%d (%d:%02d) %s\n' "$step" "$steps" $((SECONDS / 60)) $((SECONDS % 60)) "$*"
  else
    printf '\n== %s\n' "$*"
  fi
}
# What is done within a step.
note() { printf '%s\n' "-- $*"; }

# Debian packages, each with the reason it is needed for.
packages_run=(
  g++ cmake ninja-build           # the build
  qt6-base-dev                    # Qt: core, window system, network, D-Bus, tests
  qt6-declarative-dev             # Qt Quick: the window
  qt6-declarative-dev-tools       # its compiler and linter
  qt6-svg-dev                     # symbols
  qt6-httpserver-dev qt6-websockets-dev # the paper twin's knobs over HTTP; the first cannot be found without the second
  libzint-dev                     # barcodes and QR codes on the paper twin's paper
  libicu-dev                      # relative times in Arabic words
  qml6-module-qtquick qml6-module-qtquick-templates qml6-module-qtquick-layouts qml6-module-qtquick-window
  qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript # what the window imports
  pkg-config libxcb1-dev          # finding trays of the older kind on X11
  nodejs npm                      # runs the print service; brings what package.json names
  libpoppler-cpp-dev              # documents as receipts
  libnotify-bin                   # asking whether a site may print
  openssl                         # the service's certificate authority
  libnss3-tools                   # browsers' trust in that authority
  qt6-translations-l10n           # Qt's own texts in Arabic, as in its file dialog
)
packages_package=(
  dpkg-dev                        # finding the libraries a package depends on
)
packages_test=(
  "${packages_run[@]}"
  "${packages_package[@]}"
  lintian appstream man-db        # what a package is checked with
  dbus-daemon xvfb                # private session buses and displays
  clang-format shellcheck         # gates
  procps util-linux               # what the fake services of the tests use
  libzxing-dev                    # reads them back
  desktop-file-utils libglib2.0-bin # a desktop's own reading of the login item
  chromium curl jq php-cli php-curl python3 python3-requests # what the code samples of the guide run in
  iproute2                        # a network of its own for them
  cups cups-client                # the real print system, for the queues
  python3-dbus python3-gi         # a notification server that shows what it was asked
)
packages_valgrind=(
  valgrind libc6-dbg              # the checker, and the names it needs of the C library
)
packages_fuzz=(
  clang                           # the compiler whose programs search by themselves
)
packages_bench=(
  "${packages_run[@]}"
  dbus-daemon xvfb                # the private desktop that is measured on
  libsystemd-dev                  # its tray, without Qt
)

# A package counts as there when dpkg says so, or when the program it is wanted for was installed another way.
have_package() {
  case $1 in
    nodejs) command -v node >/dev/null && node -e 'process.exit(parseInt(process.versions.node) < 18 ? 1 : 0)' && return 0 ;;
    g++ | cmake | npm | openssl | clang-format | shellcheck) command -v "$1" >/dev/null && return 0 ;;
  esac
  dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

# install_packages NAME...: installs what is missing, or says how and stops.
install_packages() {
  local missing=() package
  for package in "$@"; do
    have_package "$package" || missing+=("$package")
  done
  if [ ${#missing[@]} -eq 0 ]; then
    return 0
  fi
  note "Installing: ${missing[*]}"
  local get=(apt-get install -y --no-install-recommends "${missing[@]}")
  if [ "$(id -u)" -eq 0 ]; then
    apt-get update && DEBIAN_FRONTEND=noninteractive "${get[@]}"
  elif command -v sudo >/dev/null && { sudo -n true 2>/dev/null || [ -t 0 ]; }; then
    sudo apt-get update && sudo DEBIAN_FRONTEND=noninteractive "${get[@]}"
  else
    printf 'These packages are missing. As an administrator, run:\n\n  apt-get update && %s\n\n' "${get[*]}" >&2
    exit 1
  fi
}

# install_npm_of FOLDER: brings its node_modules to what its package-lock.json says; nothing to do when it already is.
install_npm_of() {
  local folder=$root/$1
  if cmp -s "$folder/package-lock.json" "$folder/node_modules/.locked"; then
    return 0
  fi
  note "Installing what $1/package-lock.json names"
  (cd "$folder" && npm ci --ignore-scripts --no-audit --no-fund && cp package-lock.json node_modules/.locked)
}

# install_npm: what the build and the gates need.
install_npm() { install_npm_of .; }

# configure PRESET: with what the build takes from npm.
configure() {
  install_npm
  note "Configuring ($1)"
  (cd "$root" && cmake --preset "$1" >"$root/build/$1.configure.log" 2>&1) || {
    cat "$root/build/$1.configure.log" >&2
    exit 1
  }
}

# build PRESET [TARGET...]: configures when needed, then builds what changed of the targets, or of everything.
build() {
  local preset=$1 targets=()
  shift
  if [ $# -gt 0 ]; then
    targets=(--target "$@")
  fi
  configure "$preset"
  note "Building ($preset)"
  (cd "$root" && cmake --build --preset "$preset" "${targets[@]}")
}

mkdir -p "$root/build"
