# shellcheck shell=bash
# Steps that ./run and ./test share. Sourced; the caller has set -euo pipefail and stands in the project folder.

say() { printf '\033[1m==>\033[0m %s\n' "$*"; }

# The reason is the last line that a failing command prints.
fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# wait_until SECONDS COMMAND...: polls until the command succeeds; false when the time is over.
wait_until() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$deadline" ] || return 1
        sleep 0.1
    done
}

packages_of() {
    awk -v groups=" $* " '$0 !~ /^#/ && NF == 2 && index(groups, " " $1 " ") { print $2 }' setup/debian-packages
}

# install_packages GROUP...: installs what is missing of these groups. On a system without apt it prints what
# to install and goes on.
install_packages() {
    local wanted missing=() name log count=0 total status
    mapfile -t wanted < <(packages_of "$@")
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        say "This is not a Debian system. Please install what these Debian packages hold, if it is not there:"
        printf '    %s\n' "${wanted[@]}"
        return 0
    fi
    mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}" | sort -u) \
        <(dpkg-query -W -f='${db:Status-Status} ${Package}\n' | awk '$1 == "installed" { print $2 }' | sort -u))
    [ "${#missing[@]}" -gt 0 ] || return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "these packages are missing and there is no sudo: ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing ${#missing[@]} missing packages: ${missing[*]}"
    mkdir -p build
    log=build/install.log
    : >"$log"
    "${as_root[@]}" apt-get -q update >>"$log" 2>&1 || say "The package lists could not be renewed; going on with the old ones"
    total=$("${as_root[@]}" apt-get -s install --no-install-recommends "${missing[@]}" 2>>"$log" | grep -c '^Inst ' || true)
    set +e
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -q -o DPkg::Lock::Timeout=300 install --no-install-recommends \
        "${missing[@]}" 2>&1 | tee -a "$log" | while read -r line; do
        case "$line" in
        "Setting up "*)
            count=$((count + 1))
            name=${line#Setting up }
            printf '    %d/%d %s\n' "$count" "$total" "${name%% *}"
            ;;
        esac
    done
    status=${PIPESTATUS[0]}
    set -e
    [ "$status" -eq 0 ] || fail "apt-get could not install the packages: $(grep -E '^E:' "$log" | tail -n 1) (all of it in $log)"
}

# build PRESET TARGET...: configures when that was not done and builds; ninja shows the progress.
build() {
    local preset=$1
    shift
    local cache=build/$preset/CMakeCache.txt windows_qt=${LARKSPIRE_WINDOWS_QT:-}
    if [ ! -f "build/$preset/build.ninja" ] || ! grep -qxF "LARKSPIRE_WINDOWS_QT:PATH=$windows_qt" "$cache"; then
        say "Configuring ($preset)"
        mkdir -p build
        cmake --preset "$preset" "-DLARKSPIRE_WINDOWS_QT=$windows_qt" >"build/configure-$preset.log" 2>&1 ||
            fail "configuring failed: $(grep -m 1 -A 2 'CMake Error' "build/configure-$preset.log" | tr '\n' ' ') (all of it in build/configure-$preset.log)"
    fi
    say "Building ($preset)"
    NINJA_STATUS='    [%f/%t] ' cmake --build "build/$preset" ${1:+--target} "$@" || fail "the build ($preset) failed"
}
