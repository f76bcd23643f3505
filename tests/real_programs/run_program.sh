# run PROGRAM ARGUMENT...: what the cases run programs with, in the way that $way says: directly, or ostrel. PROGRAM is a path
# in the sysroot, or a name in its /usr/bin, or a path in the current directory.
run() {
    program=$1
    shift
    root=$SYSROOT
    case $program in
    "$PWD"/*) root= ;; # made by the case itself
    /*) ;;
    *) program=/usr/bin/$program ;;
    esac
    if [ -z "$EMULATOR" ]; then
        sh "$here/in_root.sh" "$SYSROOT" $([ "$way" = directly ] || echo "$OSTREL --report $report") "$program" "$@"
    elif [ "$way" = directly ]; then
        $EMULATOR "$root$program" "$@"
    else
        $EMULATOR "$OSTREL" --report "$report" --launcher "$EMULATOR" "$root$program" "$@"
    fi
}
