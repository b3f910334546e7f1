#pragma once

// What Z3MVECTOR2D, Z3MVECTOR3D and Z3MVECTOR4D have in common, written once. `Vector` is the class
// itself and N its number of components. This base has no data and no virtual operations, so that
// a vector is its N floats and nothing else. Arithmetic is in single precision, and scalars of any
// arithmetic type are converted to float first. Nothing here allocates or logs.

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <type_traits>

namespace ravolt {

// Enables a template where a condition holds.
template <bool condition> using EnableIf = typename std::enable_if<condition, int>::type;

// True when all of the types are numbers or enumerators, anything that converts to float.
template <class... Types> struct AreNumbers : std::true_type {};
template <class First, class... Rest>
struct AreNumbers<First, Rest...>
    : std::integral_constant<bool, std::is_convertible<First, float>::value &&
                                       AreNumbers<Rest...>::value> {};

// The base class of a vector class `Vector` of N components.
template <class Vector, int N> class VectorFamily {
  public:
    // The component `index`, from 0. An index outside 0 to N-1 ends the process with exit(1),
    // without a message.
    float &operator[](int index) { return data()[checked(index)]; }
    const float &operator[](int index) const { return data()[checked(index)]; }

    // The same for the other integers, so that no index type is ambiguous with a pointer's.
    template <class Integer, EnableIf<std::is_integral<Integer>::value> = 0>
    float &operator[](Integer index) {
        return data()[checked(index)];
    }
    template <class Integer, EnableIf<std::is_integral<Integer>::value> = 0>
    const float &operator[](Integer index) const {
        return data()[checked(index)];
    }

    // The first component, for OpenGL's calls that take N floats.
    operator float *() { return data(); }

    // Negated, and as it is, component by component.
    Vector operator-() const {
        return map([](float a) { return -a; });
    }
    Vector operator+() const { return self(); }

    // The scalar acts on each component.
    template <class Scalar, EnableIf<AreNumbers<Scalar>::value> = 0>
    Vector operator+(Scalar scalar) const {
        const float b = static_cast<float>(scalar);
        return map([b](float a) { return a + b; });
    }
    template <class Scalar, EnableIf<AreNumbers<Scalar>::value> = 0>
    Vector operator-(Scalar scalar) const {
        const float b = static_cast<float>(scalar);
        return map([b](float a) { return a - b; });
    }
    template <class Scalar, EnableIf<AreNumbers<Scalar>::value> = 0>
    Vector operator*(Scalar scalar) const {
        const float b = static_cast<float>(scalar);
        return map([b](float a) { return a * b; });
    }
    template <class Scalar, EnableIf<AreNumbers<Scalar>::value> = 0>
    Vector operator/(Scalar scalar) const {
        const float b = static_cast<float>(scalar);
        return map([b](float a) { return a / b; });
    }

    // Component by component, `*` too: it is no dot product. A division by zero is not guarded.
    Vector operator+(const Vector &other) const {
        return zip(other, [](float a, float b) { return a + b; });
    }
    Vector operator-(const Vector &other) const {
        return zip(other, [](float a, float b) { return a - b; });
    }
    Vector operator*(const Vector &other) const {
        return zip(other, [](float a, float b) { return a * b; });
    }
    Vector operator/(const Vector &other) const {
        return zip(other, [](float a, float b) { return a / b; });
    }

    // Dot product.
    float operator%(const Vector &other) const {
        float sum = data()[0] * other.data()[0];
        for (int i = 1; i < N; ++i)
            sum += data()[i] * other.data()[i];
        return sum;
    }

    // In place; the result is a copy.
    Vector operator+=(const Vector &other) { return self() = self() + other; }
    Vector operator-=(const Vector &other) { return self() = self() - other; }
    Vector operator*=(const Vector &other) { return self() = self() * other; }
    Vector operator/=(const Vector &other) { return self() = self() / other; }
    template <class Scalar, EnableIf<AreNumbers<Scalar>::value> = 0>
    Vector operator*=(Scalar scalar) {
        return self() = self() * scalar;
    }
    template <class Scalar, EnableIf<AreNumbers<Scalar>::value> = 0>
    Vector operator/=(Scalar scalar) {
        return self() = self() / scalar;
    }

    // On purpose: all components become zero, also the w of a 4D vector, where a new one has 1.
    void reset() {
        for (int i = 0; i < N; ++i)
            data()[i] = 0.0f;
    }

    // Stores N numbers of any mix of arithmetic types; returns a copy.
    template <class... Numbers,
              EnableIf<sizeof...(Numbers) == N && AreNumbers<Numbers...>::value> = 0>
    Vector set(Numbers... numbers) {
        const float values[N] = {static_cast<float>(numbers)...};
        return set(values);
    }

    // Stores the N floats at `values`; returns a copy. A literal 0 does not compile.
    Vector set(std::nullptr_t) = delete;
    Vector set(const float *values) {
        for (int i = 0; i < N; ++i)
            data()[i] = values[i];
        return self();
    }

    // Linear interpolation: 0 gives this vector, 1 gives `other`. `t` is not clamped.
    Vector lerp(const Vector &other, float t) const { return self() + (other - self()) * t; }

    // The Euclidean length, and its square, which needs no root.
    float squaredLength() const { return self() % self(); }
    float length() const { return std::sqrt(squaredLength()); }

    // Scales to the length `wanted`, in place; returns a copy. A zero vector becomes NaN.
    Vector setLength(float wanted) { return *this *= wanted / length(); }

    // Scales to length 1, in place; returns a copy. A zero vector stays zero.
    Vector normalize() {
        const float old = length();
        return *this /= old == 0.0f ? 1.0f : old;
    }

    // The angle between the two in radians, 0 to pi; 0 where there is none, as with a zero vector.
    // On purpose: also where rounding takes the cosine beyond 1 or -1, so that vectors of opposite
    // directions may give 0 instead of pi.
    double angle(const Vector &other) const {
        const double lengths = static_cast<double>(length()) * other.length();
        const double result = std::acos((self() % other) / lengths);
        return std::isnan(result) ? 0.0 : result;
    }

    // The distance between the two points.
    float distance(const Vector &other) const { return (other - self()).length(); }

  protected:
    VectorFamily() = default;
    VectorFamily(const VectorFamily &) = default;
    VectorFamily &operator=(const VectorFamily &) = default;
    ~VectorFamily() = default;

  private:
    Vector &self() { return static_cast<Vector &>(*this); }
    const Vector &self() const { return static_cast<const Vector &>(*this); }
    float *data() { return reinterpret_cast<float *>(&self()); }
    const float *data() const { return reinterpret_cast<const float *>(&self()); }

    // A negative index becomes a large number.
    template <class Integer> static std::size_t checked(Integer index) {
        if (static_cast<std::size_t>(index) >= N)
            std::exit(1);
        return static_cast<std::size_t>(index);
    }

    template <class Function> Vector map(Function function) const {
        Vector result;
        for (int i = 0; i < N; ++i)
            result.data()[i] = function(data()[i]);
        return result;
    }
    template <class Function> Vector zip(const Vector &other, Function function) const {
        Vector result;
        for (int i = 0; i < N; ++i)
            result.data()[i] = function(data()[i], other.data()[i]);
        return result;
    }

    template <class V, int M>
    friend int operator==(const VectorFamily<V, M> &, const VectorFamily<V, M> &);
};

// Exact comparison of all components; 1 or 0.
template <class Vector, int N>
int operator==(const VectorFamily<Vector, N> &a, const VectorFamily<Vector, N> &b) {
    for (int i = 0; i < N; ++i)
        if (a.data()[i] != b.data()[i])
            return 0;
    return 1;
}

// Whether any component differs; 1 or 0.
template <class Vector, int N>
int operator!=(const VectorFamily<Vector, N> &a, const VectorFamily<Vector, N> &b) {
    return !(a == b);
}

// Comparisons of vectors of two sizes: the smaller one widens first. (Without this, their addresses
// would be compared.)
template <class A, int N, class B, int M, EnableIf<(N < M)> = 0>
int operator==(const VectorFamily<A, N> &a, const VectorFamily<B, M> &b) {
    return B(static_cast<const A &>(a)) == static_cast<const B &>(b);
}
template <class A, int N, class B, int M, EnableIf<(N > M)> = 0>
int operator==(const VectorFamily<A, N> &a, const VectorFamily<B, M> &b) {
    return static_cast<const A &>(a) == A(static_cast<const B &>(b));
}
template <class A, int N, class B, int M, EnableIf<N != M> = 0>
int operator!=(const VectorFamily<A, N> &a, const VectorFamily<B, M> &b) {
    return !(a == b);
}

} // namespace ravolt
