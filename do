#!/usr/bin/env bash
# One entry for everything: ./do help lists the subcommands.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

packages=(build-essential cmake ninja-build pkg-config git
    libopencv-core-dev libopencv-imgproc-dev libhwy-dev liblcms2-dev
    libgtest-dev libgmock-dev libbenchmark-dev libfftw3-dev
    libopenimageio-dev libjpeg-dev libwebp-dev libcli11-dev libexiv2-dev zlib1g-dev libheif-dev
    libimage-exiftool-perl libheif-examples python3 zsh fish)
# Other versions lay code out differently.
clang_format=clang-format-14
windows_packages=(g++-mingw-w64-i686-posix libz-mingw-w64-dev dpkg-dev debootstrap)

say() { printf '\033[1m%s\033[0m\n' "$*" >&2; }
die() { printf 'do: %s\n' "$*" >&2; exit 1; }

missing_packages() {
    dpkg-query -W -f='${Package} ${db:Status-Status}\n' "$@" 2>/dev/null |
        awk '$2 == "installed" { print $1 }' | sort -u >"${TMPDIR:-/tmp}/velorn-installed.$$"
    printf '%s\n' "$@" | sort -u | comm -23 - "${TMPDIR:-/tmp}/velorn-installed.$$"
    rm -f "${TMPDIR:-/tmp}/velorn-installed.$$"
}

install_packages() {
    local missing
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    say "Installing: $(echo $missing)"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || die "not root and no sudo: install these packages: $(echo $missing)"
        as_root=(sudo)
    fi
    # Machines that have just started often hold the lock for their own updates.
    local wait_for_lock=(-o DPkg::Lock::Timeout=600)
    "${as_root[@]}" apt-get "${wait_for_lock[@]}" update -qq
    # shellcheck disable=SC2086
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get "${wait_for_lock[@]}" install -y -qq $missing >/dev/null
}

# build PRESET [TARGET...]
build() {
    local preset=$1 start=$SECONDS
    shift
    install_packages "${packages[@]}"
    cmake --preset "$preset" >/dev/null
    NINJA_STATUS='[%f of %t, %e s] ' cmake --build --preset "$preset" ${1:+--target "$@"}
    say "Built ($preset) in $((SECONDS - start)) s"
}

# build_and_test PRESET [CTEST OPTION...]
build_and_test() {
    local preset=$1
    shift
    build "$preset"
    ctest --preset "$preset" "$@"
}

command_build() { build "${1:-release}"; }
command_test() { build_and_test release "$@"; }
command_sanitize() { build_and_test sanitize "$@"; }
command_scalar() { build_and_test scalar "$@"; }

command_bench() {
    build release
    local program
    for program in build/release/bin/bench_*; do
        say "${program##*/bench_}"
        "$program" --benchmark_counters_tabular=true "$@" 2>/dev/null
    done
}

# Cross-builds velorncore10.dll for 32-bit Windows and runs its tests under Wine. Dependencies that
# are not in packages are built once and kept outside of the tree.
command_windows() {
    install_packages "${packages[@]}" "${windows_packages[@]}"
    local cache=${XDG_CACHE_HOME:-$HOME/.cache}/velorncore10/windows-x86
    local tools=$PWD/tools/windows start=$SECONDS dependencies
    dependencies=$("$tools/dependencies" "$cache" | paste -sd ';')
    "$tools/install-wine" "$cache/wine"
    cmake --preset windows-x86 -DVELORN_WINDOWS_DEPENDENCIES="$dependencies" \
        -DCMAKE_CROSSCOMPILING_EMULATOR="$tools/wine;$cache/wine" >/dev/null
    say "Dependencies are ready after $((SECONDS - start)) s"
    build windows-x86
    say "See build/windows-x86/bin/velorncore10.dll"
    ctest --preset windows-x86 "$@"
}

# ./do format lays the code out, ./do format --check fails where that would change a file.
command_format() {
    install_packages "$clang_format"
    local options=(-i)
    case ${1:-} in
    '') ;;
    --check) options=(--dry-run --Werror) ;;
    *) die "format takes --check or nothing, not: $1" ;;
    esac
    git ls-files -z '*.cpp' '*.hpp' '*.h' '*.c' | xargs -0 "$clang_format" "${options[@]}"
}

# Breaks the library of the last commit, one line at a time; ./do mutate --help has the options.
command_mutate() {
    install_packages "${packages[@]}" python3
    tools/mutation/mutate "$@"
}

# Compares velorn with the filters of scikit-image and rewrites the tables of docs/quality.md.
command_quality() {
    build release velorn makeScene
    install_packages python3-skimage python3-scipy
    /usr/bin/python3 tools/quality/measure.py build/release/bin/velorn \
        build/release/bin/makeScene build/release/quality-peers.json \
        --update docs/quality.md "$@"
}

# Restores pictures from and to every format and rewrites the table of metadata in docs/formats.md.
command_formats() {
    build release velorn
    /usr/bin/python3 tools/formats/metadata.py build/release/bin/velorn \
        --update docs/formats.md "$@"
}

# Blurs photographs of Debian's packages and drawn scenes, restores them blindly, and rewrites the
# tables of docs/blind-restoration.md.
command_blind() {
    build release studyBlind
    install_packages python3-skimage python3-scipy dpkg-dev
    local photographs=build/release/blind
    /usr/bin/python3 tools/blind/photographs.py "$photographs"
    /usr/bin/python3 tools/blind/measure.py build/release/bin/studyBlind "$photographs" \
        --update docs/blind-restoration.md "$@"
}

# Blurs a drawn scene, restores it with velorn, and shows the three side by side.
command_demo() {
    build release velorn makeScene comparePictures compareKernels
    local bin=build/release/bin
    mkdir -p demo
    "$bin/makeScene" demo/sharp.png demo/blurred.png --disc 4 --noise 1
    "$bin/velorn" deblur demo/blurred.png demo/restored.png --disc 4 --verbose
    "$bin/comparePictures" demo/sharp.png demo/blurred.png demo/restored.png \
        --labels sharp,blurred,restored --sheet demo/side-by-side.png --inset 740,465,140,140
    demo_stages "$bin"
    demo_blind "$bin" focus --disc 4
    demo_blind "$bin" motion --motion 19,25
    demo_blind "$bin" shake --shake
    say "See demo/side-by-side.png, demo/stages.png and, for unknown blurs," \
        "demo/{focus,motion,shake}*.png"
}

# The same photograph several times, each time with one more stage.
demo_stages() {
    local bin=$1 stage
    local -A options=(
        [deconvolved]=""
        [limited]="--limit 0.5"
        [sharpened]="--limit 0.5 --sharpen"
        [detailed]="--limit 0.5 --sharpen --detail"
    )
    for stage in "${!options[@]}"; do
        # shellcheck disable=SC2086
        "$bin/velorn" deblur demo/blurred.png "demo/$stage.png" --disc 4 ${options[$stage]}
    done
    "$bin/comparePictures" demo/sharp.png \
        demo/{blurred,deconvolved,limited,sharpened,detailed}.png \
        --labels "sharp,blurred,deconvolved,+ limiter,+ sharpen,+ detail" --reference-last \
        --columns 3 --sheet demo/stages.png --inset 740,465,140,140
}

# Restores a photograph blindly, and with the true kernel for comparison.
demo_blind() {
    local bin=$1 name=$2
    shift 2
    local at=demo/$name
    say "Unknown blur: $name"
    "$bin/makeScene" "$at-sharp.png" "$at-blurred.png" "$@" --noise 1 --kernel "$at-true.txt"
    "$bin/velorn" estimate "$at-blurred.png" -o "$at-found.txt"
    "$bin/compareKernels" "$at-true.txt" "$at-found.txt" --labels true,estimated \
        --sheet "$at-kernels.png"
    "$bin/velorn" deblur "$at-blurred.png" "$at-blind.png" --blind
    "$bin/velorn" deblur "$at-blurred.png" "$at-known.png" --kernel "$at-true.txt"
    "$bin/comparePictures" "$at-sharp.png" "$at-blurred.png" "$at-blind.png" "$at-known.png" \
        --labels "sharp,blurred,restored blind,kernel known" --sheet "$at-sheet.png" \
        --inset 740,465,140,140
}

command_help() {
    cat <<'TEXT'
./do test       install missing packages, build, run all tests
./do build      build only (./do build debug|sanitize|scalar for the other presets)
./do sanitize   run all tests under the address and undefined-behaviour sanitizers
./do scalar     run the library's tests with the scalar variant of the vector code
./do windows    cross-build velorncore10.dll for 32-bit Windows and run its tests under Wine
./do format     lay out the code with clang-format; --check only reports what would change
./do mutate     break the library on purpose, line by line, and list the breaks that no test notices
./do bench      build and run the benchmarks; each prints its ratio to a reference of the same run
./do quality    compare velorn with the filters of scikit-image and rewrite docs/quality.md
./do blind      restore blurred photographs blindly and rewrite the tables of
                docs/blind-restoration.md
./do formats    restore pictures from and to every format and rewrite the table of docs/formats.md
./do demo       restore blurred sample scenes, with known and with unknown blur: pictures in demo/,
                PSNR before and after

test, sanitize, scalar and windows pass further options to ctest, for example -R Digests.
TEXT
}

subcommand=${1:-help}
shift || true
declare -F "command_$subcommand" >/dev/null || die "no such subcommand: $subcommand (see ./do help)"
"command_$subcommand" "$@"
