#!/usr/bin/env bash
# Tests the functions that the scripts share: tests/scripts_test.bash CLONE
set -uo pipefail
export clone=$1 steps=$1/scripts/parts/steps.bash
status=0
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/build" && cd "$folder" || exit 1

# expect STATUS NAME COMMANDS: runs the commands with the shared functions.
expect() {
    local expected=$1 name=$2 commands=$3 actual
    timeout 10 bash -c ". \"\$steps\"; $commands" scripts/test >log 2>&1
    actual=$?
    [ "$actual" = "$expected" ] && return
    status=1
    echo "$name: the status is $actual instead of $expected"
    cat log
}

# A bare system has no ps, and needs no lock_by_link.
for lock in begin_build $(! command -v ps >/dev/null || echo lock_by_link); do
    expect 124 "$lock excludes another script" \
        "$lock; timeout 1 bash -c '. \"\$steps\"; $lock'"
    expect 0 "$lock leaves nothing behind" "$lock; end_build; [ -z \"\$(ls build)\" ]"
done
# The holder of a stale lock has ended, its process id is used again, or it is no process id.
for holder in '4194305 Thu Jan  1 00:00:00 1970' "$$ Thu Jan  1 00:00:00 1970" 'self x' '..'; do
    ln -sn "$holder" build/lock
    expect 0 "the stale lock of $holder" 'lock_by_link; end_build'
    rm -f build/lock
done

# The signals arrive after mktemp has created the folder, before its path is known.
expect 143 'a signal while a temporary folder is created' '
    mktemp() { mkdir left; kill -TERM $$ $BASHPID; echo left; }
    at_the_end "rm -r \"\$made\""
    made=$(temporary)'
[ ! -e left ] || { status=1; echo 'a signal leaves a temporary folder behind'; }

for name in 'a"b' 'a;b' 'a\b' 'a|b' '[a' 'a]' $'a\n' '${a}' '$<1>' 'un été' "it's \$HOME#" '$(touch ran)'; do
    mkdir -p "$name/scripts"
    cp -R "$clone/scripts/parts" "$name/scripts/"
    case $name in
    un* | it* | '$(touch'*) expected=0 ;;
    *) expected=1 ;;
    esac
    steps=$PWD/$name/scripts/parts/steps.bash expect "$expected" "the path $name" true
    [ "$expected" = 0 ] || [ "$(wc -l <log)" = 1 ] || { status=1; echo "the path $name: not one line"; }
done
# Root must not write through a link that another user has made.
for link in build build/dev; do
    [ "$(id -u)" = 0 ] || break
    rm -rf 'un été/build' && mkdir -p "$(dirname "un été/$link")" && ln -s "$folder" "un été/$link"
    steps=$PWD/un\ été/scripts/parts/steps.bash
    expect 0 "the own link $link" true
    chown -h nobody "un été/$link"
    expect 1 "the foreign link $link" true
done
exit "$status"
