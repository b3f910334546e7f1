// For the memory sanitizer (scripts/msan.sh): functions that are in the binary of the standard
// library alone. The sanitizer does not see what they write, and is told here.

#include <filesystem>
#include <map>
#include <string>
#include <system_error>

#include <sanitizer/msan_interface.h>
#include <sys/mman.h>

using std::filesystem::path;

namespace {

void unpoison(path *result) {
    __msan_unpoison(static_cast<void *>(result), sizeof *result);
    __msan_unpoison(result->c_str(), result->native().size() + 1);
}

} // namespace

// A function that returns a path gets the address of the result as its first argument. What it
// passes on within the library is not checked.
#define RV_RETURNS_PATH(name, parameters, arguments)                                               \
    extern "C" void __real_##name parameters;                                                      \
    extern "C" void __wrap_##name parameters {                                                     \
        __msan_scoped_disable_interceptor_checks();                                                \
        __real_##name arguments;                                                                   \
        __msan_scoped_enable_interceptor_checks();                                                 \
        unpoison(result);                                                                          \
    }

RV_RETURNS_PATH(_ZNSt10filesystem12current_pathB5cxx11ERSt10error_code,
                (path * result, std::error_code *error), (result, error))
RV_RETURNS_PATH(_ZNSt10filesystem12read_symlinkERKNS_7__cxx114pathERSt10error_code,
                (path * result, const path *file, std::error_code *error), (result, file, error))
RV_RETURNS_PATH(_ZNSt10filesystem16weakly_canonicalERKNS_7__cxx114pathERSt10error_code,
                (path * result, const path *file, std::error_code *error), (result, file, error))
RV_RETURNS_PATH(_ZNKSt10filesystem7__cxx114path11parent_pathEv, (path * result, const path *file),
                (result, file))
RV_RETURNS_PATH(_ZNKSt10filesystem7__cxx114path18lexically_relativeERKS1_,
                (path * result, const path *file, const path *base), (result, file, base))

// The links of a node of std::map and std::set.
using Node = std::_Rb_tree_node_base;
extern "C" void __real__ZSt29_Rb_tree_insert_and_rebalancebPSt18_Rb_tree_node_baseS0_RS_(bool,
                                                                                         Node *,
                                                                                         Node *,
                                                                                         Node *);
extern "C" void __wrap__ZSt29_Rb_tree_insert_and_rebalancebPSt18_Rb_tree_node_baseS0_RS_(
    bool left, Node *node, Node *parent, Node *header) {
    __real__ZSt29_Rb_tree_insert_and_rebalancebPSt18_Rb_tree_node_baseS0_RS_(left, node, parent,
                                                                             header);
    __msan_unpoison(node, sizeof *node);
}

// Discarded pages read as zeros.
extern "C" int __real_madvise(void *begin, std::size_t bytes, int advice);
extern "C" int __wrap_madvise(void *begin, std::size_t bytes, int advice) {
    const int result = __real_madvise(begin, bytes, advice);
    if (result == 0 && advice == MADV_DONTNEED)
        __msan_unpoison(begin, bytes);
    return result;
}
