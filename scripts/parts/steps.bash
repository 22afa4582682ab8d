# What the scripts have in common; each sources it first.
#
# An exported CDPATH would send a script's cd elsewhere.
unset CDPATH

# Who speaks, in every message.
script=scripts/${0##*/}

# fail MESSAGE [STATUS]
fail() {
    echo "$script: $1" >&2
    exit "${2:-1}"
}

# quietly WHAT COMMAND...: shows what the command says only if it fails; it stands in $said after.
quietly() {
    local what=$1 mode=$- status
    shift
    # Not as a condition, which would let a function go on after a fault; and not in a file: the disk
    # may be full.
    set +e
    said=$(set -e; "$@" 2>&1)
    status=$?
    [[ $mode != *e* ]] || set -e
    [ "$status" = 0 ] || {
        printf '%s\n' "$said" | tail -n 60 >&2
        fail "$what failed; the lines above say why."
    }
}

# at_the_end COMMAND: has it run however the script ends, with the terminal that is closed too.
at_the_end() {
    # shellcheck disable=SC2064 # it is this command, not a later one of that name
    trap "$1" EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# llvm_tool NAME: that of LLVM's programs; where several versions are installed, they are in the names.
llvm_tool() {
    { compgen -c "llvm-$1" || true; } | sed -nE "/^llvm-$1(-[0-9]+)?$/p" | sort -V | tail -n 1
}

# begin_build, end_build: around what configures or builds in build/, which bears one at a time. The
# lock is a link that says who holds it, so that one whose holder was killed is seen for what it is.
build_lock=
begin_build() {
    local lock=$PWD/build/lock holder said_so= tries=0
    mkdir -p build
    until ln -s "$$ ($script)" "$lock" 2>/dev/null; do
        # That build/ can't be written, whatever builds there says better.
        [ -w build ] || return 0
        holder=$(readlink "$lock") || {
            # Gone by now; or the link can't be made.
            [ $((tries += 1)) -lt 20 ] || fail "$lock can't be made."
            continue
        }
        if [ ! -d "/proc/${holder%% *}" ] && ! ps -p "${holder%% *}" >/dev/null 2>&1; then
            # Who comes second moves nothing, or what another has put there: then that goes back.
            ! mv "$lock" "$lock.$$" 2>/dev/null || [ "$(readlink "$lock.$$")" = "$holder" ] ||
                mv "$lock.$$" "$lock"
            rm -f "$lock.$$"
            continue
        fi
        [ -n "$said_so" ] || echo "$script: waiting for process $holder, which is building here." >&2
        said_so=yes
        sleep 0.5
    done
    build_lock=$lock
}
end_build() {
    [ -z "$build_lock" ] || rm -f "$build_lock"
    build_lock=
}

# The rest is for the checks that try things in a bare root of a Debian release, with mounts in a
# namespace of their own, so that none can be left behind. They work in the folder $work.
child=
# in_namespace COMMAND...: in a bash of its own, which knows the functions and variables exported here.
in_namespace() {
    # What make_bare_root is not to be in.
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

# Ends everything in the namespace, and so its mounts; then removes $work. What was in there may
# still be ending, and writing.
remove_work() {
    [ -z "$child" ] || kill -KILL "$child" 2>/dev/null || true
    [ -z "$child" ] || wait "$child" 2>/dev/null || true
    for _ in 1 2 3 4 5 6 7 8 9; do
        rm -rf --one-file-system "$work" 2>/dev/null && return
        sleep 0.5
    done
    rm -rf --one-file-system "$work"
}

# make_bare_root SUITE FOLDER [PACKAGE,...]: needs root. The machine's /dev stays mounted in it, where
# removing the folder would empty it, so it is for in_namespace alone. Packages come from the archive
# that this machine's apt uses.
make_bare_root() {
    local suite=$1 root=$2 here mirror proxy=
    here=$(readlink /proc/self/ns/mnt)
    [[ ${outside-} == mnt:* && $outside != "$here" ]] ||
        fail "a bare root is for mounts of its own; in the machine's it would be dangerous"
    # The words with "$" are apt's.
    # shellcheck disable=SC2016
    mirror=$(apt-get indextargets --format '$(ORIGIN) $(COMPONENT) $(REPO_URI)' \
        'Created-By: Packages' | sed -n 's/^Debian main //p') ||
        fail 'apt-get could not say which archive it uses'
    mirror=${mirror%%$'\n'*}
    [ -n "$mirror" ] || fail "this machine's apt knows no archive of Debian's"
    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    [ -z "$proxy" ] || export http_proxy=$proxy
    # Each says so itself, because whoever asks may be a condition.
    debootstrap --variant=minbase ${3:+"--include=$3"} "$suite" "$root" "$mirror" || return

    # How this machine reaches the archive.
    apt-config dump | grep -E '^Acquire::(https?|Retries|Check)' \
        >"$root/etc/apt/apt.conf.d/90-host" || true
    [ ! -e /etc/resolv.conf ] || cp -L /etc/resolv.conf "$root/etc/"
    mount -t proc proc "$root/proc" || return
    mount --rbind /dev "$root/dev" || return
    if [ -e "$root/usr/sbin/update-ca-certificates" ]; then
        [ ! -d /usr/local/share/ca-certificates ] ||
            cp -r /usr/local/share/ca-certificates/. "$root/usr/local/share/ca-certificates/"
        chroot "$root" update-ca-certificates || return
    fi
    chroot "$root" apt-get clean
}
