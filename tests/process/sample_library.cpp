// SPDX-License-Identifier: Apache-2.0
// A library to look at while its pages are given back: code, a constant, a pointer that the loader fills in
// and protects, and a variable. Built once more with CHANGED_WHEN_LOADED, it has an address among its code,
// too.

extern "C" {

extern const char *const names[];
const char *const names[] = {"zero", "one"};
int counter = 5;

int answer()
{
    return 42;
}

#ifdef CHANGED_WHEN_LOADED
__asm__(".pushsection .text\n"
        ".balign 16\n"
        "addressInCode: .dc.a answer\n"
        ".global addressInCode\n"
        ".popsection\n");
#endif
}
