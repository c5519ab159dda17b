#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The library as a file: what it needs, what it exports, what it imports.
#
#   library_file_test.sh READELF LIBRARY SUPPORT_LIBRARY SHELL_HELPER
set -eu
here=$(dirname "$0")
. "$here/check.sh"
readelf=$1 library=$2 support=$3 shell=$4

soname() { "$readelf" -dW "$1" | sed -n 's/.*Library soname: \[\(.*\)\]$/\1/p'; }
dynamic_symbols() { "$readelf" -sW --dyn-syms "$1" | awk '/^Symbol table/ { dynamic = /\.dynsym/ } dynamic && $1 ~ /^[0-9]+:$/ && NF >= 8 && $4 != "SECTION"'; }

# ---- what it needs ----
expect 'the libraries that it needs' \
    "$(printf '%s\n' libc.so.6 "$(soname "$support")" "$(soname "$shell")" | LC_ALL=C sort)" \
    "$("$readelf" -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p' | LC_ALL=C sort)"
expect 'its name' libcmpiDisplayManagement.so "$(soname "$library")"
expect 'nothing runs when it is loaded or unloaded' '' \
    "$("$readelf" -dW "$library" | grep -E '\((INIT|FINI|INIT_ARRAY|FINI_ARRAY|PREINIT_ARRAY)\)' || true)"
expect 'no relocation of its code' '' "$("$readelf" -dW "$library" | grep -E '\(TEXTREL\)' || true)"

# ---- what it exports ----
exported=$(dynamic_symbols "$library" | awk '$7 != "UND" { sub(/@.*/, "", $8); print $8 }' | LC_ALL=C sort)
factories=$(registered | while read -r class _ _ _ kinds; do
    for kind in $kinds; do
        case $kind in
        instance) echo "${class}_Create_InstanceMI" ;;
        method) echo "${class}_Create_MethodMI" ;;
        association) echo "${class}_Create_AssociationMI" ;;
        esac
    done
done | LC_ALL=C sort)
expect 'the number of factories' 66 "$(echo "$factories" | wc -l)"
expect 'what it exports' "$factories" "$exported"
expect 'every export is a function' '' \
    "$(dynamic_symbols "$library" | awk '$7 != "UND" && $4 != "FUNC" { print $8 }')"

# ---- what it imports ----
imported=$(dynamic_symbols "$library" | awk '$7 == "UND" { sub(/@.*/, "", $8); print $8 }' | LC_ALL=C sort)
[ -n "$imported" ] || failed 'nothing is imported: the symbols were not read'
echo "$imported" | grep -qx GetMoinitorInfo || failed 'GetMoinitorInfo is not imported'
# Memory: the list of IP endpoints alone.
expect 'the memory functions that it uses' "$(printf 'calloc\nfree\nmalloc\nstrdup\nstrndup')" \
    "$(echo "$imported" | grep -E 'alloc|free$|dup$|memalign|mmap|sbrk|getline|getdelim|asprintf|open_memstream')"
expect 'nothing of the C++ runtime' '' "$(echo "$imported" | grep -E '^(_Z|__cxa_|__gxx_|_Unwind_|__gcc_|__once)' || true)"
expect 'no threads, locks or thread-local state' '' \
    "$(echo "$imported" | grep -E '^(pthread_|thrd_|mtx_|sem_|__tls_get_addr|__aeabi_read_tp)' || true)"
expect 'no unbounded copies' '' \
    "$(echo "$imported" | grep -E '^(strcpy|strcat|stpcpy|sprintf|vsprintf|gets)$' || true)"
expect 'no weak symbol that another library could fill' '' \
    "$(dynamic_symbols "$library" | awk '$5 == "WEAK" { print $8 }')"

# The C library of a controller is older than that of the machine which builds: no version above 2.14.
expect 'no symbol of a newer C library' '' "$(dynamic_symbols "$library" | sed -n 's/.*@\{1,2\}GLIBC_\([0-9.]*\).*/\1/p' |
    sort -u | awk -F. '$1 > 2 || $2 > 14')"

# ---- how it is protected ----
"$readelf" -lW "$library" | grep -q GNU_RELRO || failed 'tables with pointers stay writable: no RELRO'
"$readelf" -dW "$library" | grep -Eq 'BIND_NOW|Flags:.* NOW' || failed 'functions are bound late'
expect 'the stack is not executable' '' "$("$readelf" -lW "$library" | awk '$1 == "GNU_STACK" && $7 ~ /E/')"

report
