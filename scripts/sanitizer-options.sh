#!/bin/sh
# Variables for a program built with sanitizers: everything is looked for, and a finding is a failure.
set -eu
cd "$(dirname "$0")"
echo "ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1:check_initialization_order=1:suppressions=$PWD/asan.supp"
echo "LSAN_OPTIONS=suppressions=$PWD/lsan.supp:print_suppressions=0"
echo "UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1"
echo "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=$PWD/tsan.supp"
