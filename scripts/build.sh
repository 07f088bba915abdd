# Shared by the scripts (sourced, not run): configures and builds a folder
# with Ninja, through ccache when it is there.
#   build_folder FOLDER BUILD_TYPE [TARGET] -- [extra cmake arguments...]

# Paths relative to the checkout, so that another clone reuses the cache.
export CCACHE_BASEDIR="$(pwd)" CCACHE_NOHASHDIR=1

build_folder() {
    local folder=$1 type=$2 target=""
    shift 2
    if [ $# -gt 0 ] && [ "$1" != "--" ]; then target=$1; shift; fi
    [ $# -gt 0 ] && [ "$1" = "--" ] && shift
    local launcher=()
    command -v ccache >/dev/null 2>&1 && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE="$type" "${launcher[@]}" "$@" >/dev/null
    if [ -n "$target" ]; then
        cmake --build "$folder" -j "$(nproc)" --target "$target"
    else
        cmake --build "$folder" -j "$(nproc)"
    fi
}
