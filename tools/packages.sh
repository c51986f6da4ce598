# Sourced by run, test and bench: which Debian packages are needed for what, and how to get those that are missing.

build_packages=(
    g++ cmake ninja-build ccache pkg-config
    qt6-base-dev qt6-svg-dev libicu-dev nlohmann-json3-dev libsigc++-3.0-dev libxxhash-dev libglib2.0-dev libfontconfig-dev
)
runtime_packages=(qt6-wayland qt6-translations-l10n fonts-dejavu-core fonts-noto-color-emoji fonts-jetbrains-mono)
virtual_display_packages=(xvfb xauth)
test_packages=(
    lld libgtest-dev libbenchmark-dev xvfb openbox dbus at-spi2-core x11-xkb-utils
    libxcb1-dev libxcb-xtest0-dev
)
check_packages=(clang-format-19)
tidy_packages=(clang-19 clang-tidy-19)

# require_packages PACKAGE…: installs what is missing where it may; elsewhere says what is missing and gives up.
require_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! sudo -n true 2>/dev/null && ! [ -t 0 ]; then
            echo "These packages are missing: ${missing[*]}" >&2
            echo "Install them with: apt-get install ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -q >/dev/null || true
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}" >/dev/null || {
        echo "Could not install: ${missing[*]}" >&2
        return 1
    }
}
