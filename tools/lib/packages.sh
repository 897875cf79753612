# shellcheck shell=bash
# What the machine must have.
# shellcheck disable=SC2154  # root is set by tools/dev

needed_packages() { sed -e 's/#.*//' -e '/^[[:space:]]*$/d' -- "$root/tools/packages.txt" | awk '{print $1}'; }

missing_packages() {
    comm -23 <(needed_packages | sort) \
        <(dpkg-query -W -f '${Package} ${db:Status-Status}\n' 2>/dev/null | awk '$2 == "installed" {print $1}' | sort -u)
}

bootstrap() {
    [[ -z ${PROJECT_NO_BOOTSTRAP-} ]] || return 0
    if ! command -v apt-get >/dev/null; then
        fail "no apt-get here: install what tools/packages.txt names, then set PROJECT_NO_BOOTSTRAP=1"
    fi
    local missing=() become_root=()
    mapfile -t missing < <(missing_packages)
    ((${#missing[@]})) || return 0
    if ((EUID != 0)); then
        command -v sudo >/dev/null || fail "missing packages, and neither root nor sudo to install them: ${missing[*]}"
        become_root=(sudo)
    fi
    say "install ${missing[*]}"
    "${become_root[@]}" apt-get update -q </dev/null >&2
    "${become_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}" </dev/null >&2
}
