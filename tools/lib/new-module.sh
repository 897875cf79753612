# shellcheck shell=bash
# A new module: header, source and test, registered where the build looks for them.
# shellcheck disable=SC2154  # root is set by tools/dev

# Puts a file first into the SOURCES list of a build file, each name on a line of its own.
add_to_sources() {  # BUILD-FILE SOURCE
    awk -v source="$2" '
        !done && match($0, /^[ \t]*SOURCES/) {
            rest = substr($0, RLENGTH + 1)
            indent = substr($0, 1, RLENGTH - length("SOURCES")) "    "
            sub(/^[ \t]+/, "", rest)
            print substr($0, 1, RLENGTH)
            print indent source
            if (rest != "") print indent rest
            done = 1
            next
        }
        { print }' "$1" >"$1.new"
    mv -- "$1.new" "$1"
}

new_module() {
    (($# == 2)) || misused "new-module wants a library and a name, as in: new-module kiocore utility/Stopwatch"
    local library=$1 name=$2
    local class=${name##*/} below=
    [[ $name == */* ]] && below=${name%/*}/
    [[ $name =~ ^([A-Za-z]+/)*[A-Z][A-Za-z0-9]*$ ]] ||
        misused "'$name' is no name for a module; it is PascalCase, with folders before it if need be"

    local folder sources alias space header
    if [[ $library == TRFoundation* ]]; then
        # Headers of the library lie in one folder, whatever folder the source lies in.
        folder=TRFoundation sources=Src alias=TR::$library space=TR
        header=include/TR/$class.h
    else
        folder=host/$library sources=src alias=Host::$library
        [[ $library == kiocore && -n $below ]] && space=kiocore::${below%%/*} || space=$library
        header=include/$library/$below$class.h
    fi
    [[ -f $root/$folder/CMakeLists.txt ]] || misused "there is no library $library: $folder/CMakeLists.txt is missing"
    grep -q "SOURCES" "$root/$folder/CMakeLists.txt" || fail "$folder/CMakeLists.txt has no SOURCES to add to"

    local source=$sources/$below$class.cpp
    local tests=tests/$folder test=$below${class}Tests.cpp
    local include=${header#include/} file
    for file in "$folder/$header" "$folder/$source" "$tests/$test"; do
        [[ ! -e $root/$file ]] || fail "$file is there already"
    done
    mkdir -p -- "$(dirname -- "$root/$folder/$header")" "$(dirname -- "$root/$folder/$source")" \
        "$(dirname -- "$root/$tests/$test")"

    cat >"$root/$folder/$header" <<TEXT
#pragma once

#include <kiocore/Export.h>

namespace $space {

/// What it is for, in a sentence.
///
/// Threading: which thread may call what.
class KIO_EXPORT $class {
public:
    $class();
    ~$class();
};

} // namespace $space
TEXT
    cat >"$root/$folder/$source" <<TEXT
#include <$include>

namespace $space {

$class::$class() = default;

$class::~$class() = default;

} // namespace $space
TEXT
    cat >"$root/$tests/$test" <<TEXT
#include <$include>

#include <gtest/gtest.h>

namespace {

TEST($class, SaysWhatCouldBreak)
{
    const $space::$class object;
    (void)object;
    GTEST_SKIP() << "say here what $class must do";
}

} // namespace
TEXT
    add_to_sources "$root/$folder/CMakeLists.txt" "$source"
    [[ -f $root/$tests/CMakeLists.txt ]] || printf '# Test programs of %s.\n' "$folder" >"$root/$tests/CMakeLists.txt"
    grep -q "SOURCES" "$root/$tests/CMakeLists.txt" ||
        printf '\nproject_test(%s_tests\n    SOURCES\n    LIBRARIES %s)\n' "$library" "$alias" >>"$root/$tests/CMakeLists.txt"
    add_to_sources "$root/$tests/CMakeLists.txt" "$test"

    printf 'made        %s\n            %s\n            %s\n' "$folder/$header" "$folder/$source" "$tests/$test"
    printf 'registered  %s\n            %s\n' "$folder/CMakeLists.txt" "$tests/CMakeLists.txt"
    printf 'next        tools/dev test -R %s\n' "$class"
}
