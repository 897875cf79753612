# shellcheck shell=bash
# Which files are ours. Lists end each name with a zero byte.
# shellcheck disable=SC2154  # root is set by tools/dev

all_sources() {
    find "$root"/{host,TRFoundation,apps,tests,bench,fuzz,examples} -type f \( -name '*.h' -o -name '*.cpp' \) \
        -print0 2>/dev/null | sort -z
}

# Those that differ from the main branch, committed or not; all of them where that cannot be told.
changed_sources() {
    local base
    if ! base=$(git -C "$root" merge-base HEAD main 2>/dev/null); then
        all_sources
        return
    fi
    {
        git -C "$root" diff -z --name-only --diff-filter=d "$base" -- '*.h' '*.cpp'
        git -C "$root" ls-files -z --others --exclude-standard -- '*.h' '*.cpp'
    } | sort -zu | while IFS= read -r -d '' file; do printf '%s\0' "$root/$file"; done
}
