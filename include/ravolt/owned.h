#pragma once

namespace ravolt {

// A field for what belongs to one object alone, such as its entry in a registry or memory that it
// must release. A copy of the object starts with T's initial value, and an assignment to the object
// leaves the field unchanged: so a copy releases nothing.
template <class T> class Owned {
  public:
    Owned() : value() {}
    explicit Owned(const T &initial) : value(initial) {}
    Owned(const Owned &) : value() {}
    Owned &operator=(const Owned &) { return *this; }

    // The value.
    T &operator*() { return value; }
    const T &operator*() const { return value; }
    T *operator->() { return &value; }
    const T *operator->() const { return &value; }

  private:
    T value;
};

} // namespace ravolt
