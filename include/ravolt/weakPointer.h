#pragma once

#include "ravolt/api.h"

// Pointers that become NULL when the object they point to is deleted. They count as no references.

namespace ravolt {

template <class T> class WeakPointers;

// A pointer to an object of a class T that has a member `WeakPointers<T> weakPointers`. Setting
// it, and deleting the object, takes constant time per pointer and no memory.
template <class T> class WeakPointer {
  public:
    WeakPointer() : target(nullptr), link(nullptr), next(nullptr) {}
    ~WeakPointer() { detach(); }
    WeakPointer(const WeakPointer &) = delete;
    WeakPointer &operator=(const WeakPointer &) = delete;

    // For the library, with foundation/registry.h; T must be complete.
    void set(T *newTarget) {
        detach();
        if (newTarget)
            attach(newTarget, Registry<T>::weakPointers(*newTarget).first);
    }

    // The object; NULL when there is none, or when it was deleted.
    T *get() const { return target; }
    T *operator->() const { return target; }
    explicit operator bool() const { return target != nullptr; }

  private:
    friend class WeakPointers<T>;

    void attach(T *newTarget, WeakPointer *&first) {
        target = newTarget;
        link = &first;
        next = first;
        if (next)
            next->link = &next;
        first = this;
    }

    void detach() {
        if (!target)
            return;
        *link = next;
        if (next)
            next->link = link;
        target = nullptr;
    }

    T *target;
    WeakPointer **link; // what points to this one: the head, or `next` of the one before
    WeakPointer *next;  // to the same object
};

// All weak pointers to one object, of which this is a member.
template <class T> class WeakPointers {
  public:
    WeakPointers() : first(nullptr) {}
    ~WeakPointers() {
        while (first)
            first->detach();
    }
    WeakPointers(const WeakPointers &) = delete;
    WeakPointers &operator=(const WeakPointers &) = delete;

  private:
    friend class WeakPointer<T>;

    WeakPointer<T> *first;
};

} // namespace ravolt
