#pragma once

// The registry: an intrusive, doubly linked list of all live objects of a class, in the order of
// their creation. The class has the two ends (static pointers) and each object its links
// (`previous`, `next`); this template has the rules and no state. A class that uses it declares it
// a friend. The list owns its objects: cleanUp deletes them.

#include "ravolt/weakPointer.h"

#include <cstring>

namespace ravolt {

template <class T> struct Registry {
    // Appends `object` to the list.
    static void append(T *&first, T *&last, T *object) {
        object->previous = last;
        object->next = nullptr;
        (last ? last->next : first) = object;
        last = object;
    }

    // Removes `object` from the list. An object that is not in it, such as a memberwise copy,
    // changes nothing.
    static void unlink(T *&first, T *&last, T *object) {
        T *&before = object->previous ? object->previous->next : first;
        if (before != object)
            return;
        before = object->next;
        (object->next ? object->next->previous : last) = object->previous;
        object->previous = object->next = nullptr;
    }

    static unsigned int count(const T *first) {
        unsigned int number = 0;
        for (; first; first = first->next)
            ++number;
        return number;
    }

    static T *findById(T *first, unsigned int id) {
        return find(first, [id](const T &object) { return object.id == id; });
    }

    // The first object in order of creation whose text field `text` equals `wanted`; NULL for none,
    // or when `wanted` is NULL.
    static T *findByText(T *first, char (T::*text)[256], const char *wanted) {
        if (!wanted)
            return nullptr;
        return find(first, [=](const T &object) { return std::strcmp(object.*text, wanted) == 0; });
    }

    // Deletes all objects and returns how many deletions that took. The head is read again each
    // time, so a destructor may delete other members of the list, its own successor too.
    static unsigned int cleanUp(T *&first) {
        unsigned int number = 0;
        while (first) {
            delete first; // NOLINT(clang-analyzer-cplusplus.NewDelete): its destructor unlinks it
            ++number;
        }
        return number;
    }

    // The weak pointers to `object`; see ravolt/weakPointer.h.
    static WeakPointers<T> &weakPointers(T &object) { return object.weakPointers; }

  private:
    template <class Test> static T *find(T *object, Test matches) {
        while (object && !matches(*object))
            object = object->next;
        return object;
    }
};

} // namespace ravolt
