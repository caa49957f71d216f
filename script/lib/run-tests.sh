# shellcheck shell=bash
# Runs a preset's tests; sourced by the scripts that do.

# Every program of tests but those of the finished bundle, which no sanitizer and no valgrind looks into.
# shellcheck disable=SC2034
test_programs=(unit_tests allocation_tests scenario_tests conformance_tests world_tests linux_tests)

# Most of a test's time is waiting for a server of its own, so more of them run than there are processors.
run_tests() {
    ctest --preset "$1" --parallel "$(($(nproc) * 2))" "${@:2}"
}

# A machine that builds for others may stall a test's own server: what fails in the crowd is run again alone, twice at
# most, and named.
run_tests_patiently() {
    local failed=build/$1/Testing/Temporary/LastTestsFailed.log
    rm -f "$failed"
    run_tests "$@" && return
    [[ -s $failed ]] || return 1
    sed 's/^[0-9]*:/AGAIN: /' "$failed"
    ctest --preset "$1" --rerun-failed --parallel 1 --repeat until-pass:2
}
