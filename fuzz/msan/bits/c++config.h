// For the memory sanitizer (scripts/msan.sh): the templates of the standard library, std::string
// among them, are compiled with the program, and so with the sanitizer, in place of those in the
// library's binary.
#include_next <bits/c++config.h>

#undef _GLIBCXX_EXTERN_TEMPLATE
#define _GLIBCXX_EXTERN_TEMPLATE 0
