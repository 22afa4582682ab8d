# Functions that the scripts share. Each script sources this file first.
#
# cd follows an exported CDPATH, and would change to another folder.
unset CDPATH

# The start of every message.
script=scripts/${0##*/}

# fail MESSAGE [STATUS]: prints the message and ends the script.
fail() {
    echo "$script: $1" >&2
    exit "${2:-1}"
}

# The clone's folder. Command substitution removes line breaks from the end, so a slash protects them.
clone=$(cd -P -- "${BASH_SOURCE[0]%/*}/../.." && printf '%s/' "$PWD") || fail 'the clone cannot be entered.'
clone=${clone%/}
# CMake or Ninja cannot build below these paths. Without this test the build fails with messages that do
# not mention the path.
case $clone in
*[]\"\;\\\|[]* | *$'\n'* | *\$*\{* | *\$\<*)
    fail "CMake cannot build in a folder with this path; rename it: $(printf %q "$clone")"
    ;;
esac

# The scripts write in build/. Links there could lead elsewhere, so a script trusts only its user's own
# links. This matters most if root runs the script in another user's clone.
foreign_links=$(find "$clone/build" -maxdepth 1 -type l ! -user "$(id -u)" 2>/dev/null || true)
[ -z "$foreign_links" ] || fail "these links belong to another user; remove them: $foreign_links"

# quietly NAME COMMAND...: runs the command, and prints its output only if it fails. The output is also
# in $output afterwards.
quietly() {
    local name=$1 mode=$- status
    shift
    # Inside a condition, "set -e" has no effect: a function would continue after a failed command. The
    # output is not written to a file, because the disk may be full.
    set +e
    output=$(set -e; "$@" 2>&1)
    status=$?
    [[ $mode != *e* ]] || set -e
    [ "$status" = 0 ] || {
        printf '%s\n' "$output" | tail -n 60 >&2
        fail "$name failed; the lines above say why."
    }
}

# at_the_end COMMAND: runs the command when the script ends, also when a signal ends it. Further signals
# do not interrupt the command.
at_the_end() {
    # shellcheck disable=SC2064 # $1 is expanded now, because it is another word later
    trap "trap '' HUP INT TERM; $1" EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# temporary MKTEMP-ARGUMENT...: creates a temporary file or folder and prints its path. Call it as
# name=$(temporary ...), after at_the_end: a signal that arrives meanwhile waits for the assignment, so
# the command of at_the_end always knows the path.
temporary() {
    trap '' HUP INT TERM
    mktemp "$@"
}

# llvm_tool NAME: prints the name of LLVM's program llvm-NAME. If several versions are installed, it is
# the newest one.
llvm_tool() {
    { compgen -c "llvm-$1" || true; } | sed -nE "/^llvm-$1(-[0-9]+)?$/p" | sort -V | tail -n 1
}

# find_homebrew_llvm: adds Homebrew's LLVM to the path on macOS, because Homebrew does not, and Apple's
# Clang has neither libFuzzer nor clang-tidy.
find_homebrew_llvm() {
    if [ "$(uname)" = Darwin ] && command -v brew >/dev/null; then
        PATH=$(brew --prefix --installed llvm@19 2>/dev/null || brew --prefix llvm)/bin:$PATH
    fi
}

# begin_build, end_build: enclose the commands that configure or build in build/, because only one script
# may do so at a time. The current folder is the clone's.
build_link=
begin_build() {
    mkdir -p build || fail "$PWD/build cannot be created."
    if command -v flock >/dev/null; then
        # The lock belongs to descriptor 8, not to a file, so a killed script leaves no lock behind.
        { exec 8<build; } 2>/dev/null || return 0
        flock -n 8 || {
            echo "$script: waiting for another build in $PWD." >&2
            flock 8
        }
    else
        lock_by_link
    fi
}
end_build() {
    exec 8<&-
    [ -z "$build_link" ] || rm -f "$build_link"
    build_link=
}

# start_time PROCESS-ID: prints when the process started, or nothing if there is no such process.
start_time() {
    [[ $1 =~ ^[0-9]+$ ]] || return 0
    LC_ALL=C TZ=UTC ps -o lstart= -p "$1" 2>/dev/null || true
}

# lock_by_link: locks build/ on systems without flock (macOS), by the link build/lock. It names a process
# and its start time, because another process may have the id of a killed one.
lock_by_link() {
    local link=$PWD/build/lock holder started is_reported='' tries=0
    until ln -sn "$$ $(start_time $$)" "$link" 2>/dev/null; do
        # The build itself reports best that build/ cannot be written.
        [ -w build ] || return 0
        holder=$(readlink "$link") || {
            # The link was removed in the meantime, or it cannot be created.
            [ $((tries += 1)) -lt 20 ] || fail "$link cannot be created."
            continue
        }
        started=$(start_time "${holder%% *}")
        if [ -z "$started" ] || [ "$holder" != "${holder%% *} $started" ]; then
            # If another script has replaced the stale link by its own link, that link is restored.
            if mv "$link" "$link.$$" 2>/dev/null && [ "$(readlink "$link.$$")" != "$holder" ]; then
                mv "$link.$$" "$link"
            fi
            rm -f "$link.$$"
            continue
        fi
        [ -n "$is_reported" ] ||
            echo "$script: waiting for process ${holder%% *}, which is building in $PWD." >&2
        is_reported=yes
        sleep 0.5
    done
    build_link=$link
}

# The functions below are for the checks that try things in a bare root of a Debian release. The mounts
# are in a namespace of their own, so none can be left behind. The checks work in the folder $work.
child=
# in_namespace COMMAND...: runs the command in a bash that has the functions and variables exported here.
in_namespace() {
    # make_bare_root refuses to work in this namespace.
    outside=$(readlink /proc/self/ns/mnt) || fail 'it needs Linux, and /proc'
    export outside script work
    export -f fail quietly make_bare_root
    unshare --mount --pid --fork --kill-child --mount-proc bash -c '"$@"' - "$@" </dev/null &
    child=$!
    local status=0
    wait "$child" || status=$?
    child=
    return "$status"
}

# remove_work: ends every process in the namespace, which ends its mounts, then removes $work. It tries
# several times, because those processes may still be writing while they end.
remove_work() {
    [ -n "$work" ] || return 0
    [ -z "$child" ] || kill -KILL "$child" 2>/dev/null || true
    [ -z "$child" ] || wait "$child" 2>/dev/null || true
    for _ in 1 2 3 4 5 6 7 8 9; do
        rm -rf --one-file-system "$work" 2>/dev/null && return
        sleep 0.5
    done
    rm -rf --one-file-system "$work"
}

# make_bare_root SUITE FOLDER [PACKAGE,...]: installs a minimal Debian. It needs root, and works inside
# in_namespace only: the machine's /dev stays mounted in the folder, and removing the folder would empty
# /dev. Packages come from the archive that this machine's apt uses.
make_bare_root() {
    local suite=$1 folder=$2 here mirror proxy=
    here=$(readlink /proc/self/ns/mnt)
    [[ ${outside-} == mnt:* && $outside != "$here" ]] ||
        fail "a bare root needs mounts of its own; among the machine's it would be dangerous"
    # apt-get, not the shell, expands the words with "$".
    # shellcheck disable=SC2016
    mirror=$(apt-get indextargets --format '$(ORIGIN) $(COMPONENT) $(REPO_URI)' \
        'Created-By: Packages' | sed -n 's/^Debian main //p') ||
        fail 'apt-get could not say which archive it uses'
    mirror=${mirror%%$'\n'*}
    [ -n "$mirror" ] || fail "this machine's apt knows no archive of Debian"
    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    [ -z "$proxy" ] || export http_proxy=$proxy
    # Each command below ends the function itself, because "set -e" has no effect in a condition.
    debootstrap --variant=minbase ${3:+"--include=$3"} "$suite" "$folder" "$mirror" || return

    # The settings by which this machine reaches the archive.
    apt-config dump | grep -E '^Acquire::(https?|Retries|Check)' \
        >"$folder/etc/apt/apt.conf.d/90-host" || true
    [ ! -e /etc/resolv.conf ] || cp -L /etc/resolv.conf "$folder/etc/"
    mount -t proc proc "$folder/proc" || return
    mount --rbind /dev "$folder/dev" || return
    if [ -e "$folder/usr/sbin/update-ca-certificates" ]; then
        [ ! -d /usr/local/share/ca-certificates ] ||
            cp -r /usr/local/share/ca-certificates/. "$folder/usr/local/share/ca-certificates/"
        chroot "$folder" update-ca-certificates || return
    fi
    chroot "$folder" apt-get clean
}
