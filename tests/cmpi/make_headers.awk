#!/usr/bin/awk -f
# SPDX-License-Identifier: Apache-2.0
# Makes a set of CMPI headers, cmpidt.h and cmpift.h, from the tables of the standard, to build the library with.
#
#   make_headers.awk -v version=VERSION -v directory=DIRECTORY layout.tsv constants.tsv
#
#   2.0    no pointer is const; headers include each other by their bare names
#   2.1    const as the standard has it, and the members of 2.1; CMPIVersion is a macro; the exact-width types of C;
#          the platform must be named; headers include each other below cmpi/
#
# Neither has cmpimacs.h, which the library does without.

BEGIN {
    FS = "\t"
    if (version != "2.0" && version != "2.1") { print "version: 2.0 or 2.1" > "/dev/stderr"; exit 1 }
    types = directory "/cmpi/cmpidt.h"; tables = directory "/cmpi/cmpift.h"
    print "#ifndef VARIANT_CMPIDT_H\n#define VARIANT_CMPIDT_H\n#include <stddef.h>\n#include <stdint.h>\n#include <time.h>" > types
    if (version == "2.1")
        print "#ifndef CMPI_PLATFORM_LINUX_GENERIC_GNU\n#error \"the platform is not named\"\n#endif" > types
    print version == "2.1" ? "#define CMPIVersion int" : "typedef int CMPIVersion;" > types
    bits["8"] = "char"; bits["16"] = "short"; bits["32"] = "int"; bits["64"] = "long long"
    for (width in bits) {
        print "typedef " (version == "2.1" ? "uint" width "_t" : "unsigned " bits[width]) " CMPIUint" width ";" > types
        print "typedef " (version == "2.1" ? "int" width "_t" : "signed " bits[width]) " CMPISint" width ";" > types
    }
    print "typedef unsigned char CMPIBoolean;\ntypedef unsigned short CMPIChar16, CMPIType, CMPIValueState;" > types
    print "typedef float CMPIReal32;\ntypedef double CMPIReal64;\ntypedef unsigned int CMPICount, CMPIFlags;" > types
    print "typedef void *(*CMPIThreadFunc)(void *);\ntypedef void (*CMPIThreadOnceFunc)(void);" > types
    print "typedef void (*CMPIThreadKeyCleanupFunc)(void *);\ntypedef void *CMPIMsgFileHandle;" > types
    print "typedef struct _CMPIGcStat CMPIGcStat;" > types
    print "#ifndef VARIANT_CMPIFT_H\n#define VARIANT_CMPIFT_H" > tables
    print version == "2.1" ? "#include <cmpi/cmpidt.h>" : "#include \"cmpidt.h\"" > tables
}
function failed(what) { print FILENAME ": " what ": " $0 > "/dev/stderr"; broken = 1; exit 1 }
function is_value(name) { return name ~ /^CMPI(ValuePtr|Value|Data|Status)$/ }
function kind(name) { return name == "CMPIValue" ? "union" : "struct" }

# ---- layout.tsv: structures, their members, the version that brought each ----
FILENAME ~ /layout\.tsv$/ && FNR > 1 {
    if (NF != 5) failed("not five columns")
    if ($5 > version) next
    if (!($1 in members)) {
        order[++structures] = $1
        print "typedef " kind($1) " _" $1 " " $1 ";" > types
    }
    if (version == "2.0") gsub(/const /, "", $2)
    members[$1] = members[$1] "    " $2 ";\n"
}
# ---- constants.tsv: constants, texts, enumerations ----
FILENAME ~ /constants\.tsv$/ {
    if (NF != 4) failed("not four columns")
    if ($2 == "CMPICurrentVersion" && version == "2.0") $3 = 200
    if ($1 == "constant" || $1 == "text") print "#define " $2 " " $3 > types
    else {
        if (!($1 in enumerators)) enumerations[++enums] = $1
        enumerators[$1] = enumerators[$1] "    " $2 " = " $3 ",\n"
    }
}
END {
    if (broken || !structures || !enums) exit 1
    for (i = 1; i <= enums; ++i)
        print "typedef enum _" enumerations[i] " {\n" enumerators[enumerations[i]] "} " enumerations[i] ";" > types
    print "typedef CMPIData CMPIAccessor(const char *, void *);" > types
    for (i = 1; i <= structures; ++i)
        print kind(order[i]) " _" order[i] " {\n" members[order[i]] "};" > (is_value(order[i]) ? types : tables)
    print "#endif" > types
    print "#endif" > tables
}
