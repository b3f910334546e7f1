# Shared by ./demo.sh and ./test.sh: packages, building and the virtual screen. Sourced, not run.

# What a fresh Debian machine lacks: for building and for the demo,
demo_packages=(
    cmake ninja-build g++ pkg-config
    libsdl1.2-dev libsdl1.2-compat libgl-dev libgl1-mesa-dri libglx-mesa0 libegl1 libegl-mesa0
    libx11-dev libtinyxml-dev
    libmpeg2-4-dev libassimp-dev libstb-dev libcli11-dev nlohmann-json3-dev assimp-testmodels
    libfreetype-dev fonts-dejavu-core
)
# and for the tests, which also build what is optional.
test_packages=(
    "${demo_packages[@]}"
    ccache libmagickwand-6.q16-dev
    xvfb xdotool
    libgtest-dev libbenchmark-dev python3 python3-jsonschema clang-format-14 clang-tidy-14
    glslang-tools ffmpeg mjpegtools
    lintian dpkg-dev fakeroot file abigail-tools xz-utils
    parallel mandoc bsdextrautils
    mkdocs python3-pygments doxygen chromium python3-matplotlib
)

# Says what went wrong and what to do about it, and ends the script.
fail() {
    printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# require_known "NAMES" NAME ...: fails at a name that is none of NAMES.
require_known() {
    local known=" $1 " name
    shift
    for name in "$@"; do
        [[ $known == *" $name "* ]] || fail "unknown name $name; see $0 --help"
    done
}

# install_packages PACKAGE ...: those that are not there yet.
install_packages() {
    local missing=() package administrator=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    command -v apt-get >/dev/null ||
        fail "needs these Debian packages, and this is no Debian system: ${missing[*]}"
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "needs packages; as root run: apt-get install ${missing[*]}"
        administrator=(sudo)
    fi
    echo "Installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    "${administrator[@]}" apt-get update -qq || fail "apt-get update failed; is there a network?"
    "${administrator[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" ||
        fail "could not install the packages; run: apt-get install ${missing[*]}"
}

# Starts a virtual screen on a free display, sets DISPLAY, and stops it when the script ends.
start_display() {
    local place
    place=$(mktemp) || fail "no place for temporary files"
    # Without -noreset the server begins anew, and refuses connections, each time that its last
    # window has gone.
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -noreset -nolisten tcp 3>"$place" 2>"$place.log" &
    display_server=$!
    trap 'kill "$display_server" 2>/dev/null; wait "$display_server" 2>/dev/null' EXIT
    local waited
    for waited in $(seq 100); do
        [ -s "$place" ] && break
        kill -0 "$display_server" 2>/dev/null || break
        sleep 0.1
    done
    [ -s "$place" ] || fail "the virtual screen did not start: $(cat "$place.log")"
    DISPLAY=":$(tr -d '[:space:]' <"$place")"
    export DISPLAY
    rm -f "$place" "$place.log"
}

# Objects are shared between checkouts: paths below this one count as relative.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1

# configure_and_build PRESET [option of cmake ...] [-- TARGET ...]: these targets, or all.
configure_and_build() {
    local preset=$1 log options=()
    shift
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        options+=("$1")
        shift
    done
    [ $# -eq 0 ] || shift
    log="build/$preset/configure.log"
    mkdir -p "build/$preset"
    cmake --preset "$preset" "${options[@]}" >"$log" 2>&1 ||
        { cat "$log"; fail "cmake failed; delete build/$preset and try again"; }
    cmake --build --preset "$preset" --parallel "$(nproc)" ${1+--target "$@"} ||
        fail "building '$preset' failed; see the first error above"
}
