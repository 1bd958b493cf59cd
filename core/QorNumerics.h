#pragma once

#include "core/QorExport.h"

#include <cstdint>

/// Double-precision complex number.
class QOR_API Complex
{
public:
    /// re + 0i; the default is 0 + 0i.
    Complex(double re = 0.0) : m_real(re) {}
    Complex(double re, double im) : m_real(re), m_image(im) {}
    Complex(const Complex&) = default;
    Complex& operator=(const Complex&) = default;

    void SetReal(double re) { m_real = re; }
    void SetImage(double im) { m_image = im; }
    double GetReal() const { return m_real; }
    double GetImage() const { return m_image; }

    /// Both parts exactly equal.
    char operator==(const Complex& other) const;
    char operator!=(const Complex& other) const;

    Complex& operator+=(const Complex& other);
    Complex& operator-=(const Complex& other);
    /// (a + bi)(c + di) = (ac - bd) + (ad + bc)i.
    Complex& operator*=(const Complex& other);
    /// Real part (ac + bd) / (c² + d²), imaginary part -(bc + ad) / (c² + d²).
    /// \note The imaginary part is not the textbook (bc - ad): (1 + i) / (1 + i) is 1 - i. A zero divisor
    ///       is not checked and gives IEEE infinities or NaNs.
    Complex& operator/=(const Complex& other);

    Complex operator+(const Complex& other) const;
    Complex operator-(const Complex& other) const;
    Complex operator*(const Complex& other) const;
    /// As operator/=, including its imaginary-part rule.
    Complex operator/(const Complex& other) const;

    /// (re² + im²) to the power 0.5.
    double GetLength() const;
    /// arccos(re / length), always in [0, pi]: (0, 1) and (0, -1) both give pi / 2. NaN for 0 + 0i.
    double GetAngle() const;

private:
    double m_real = 0.0;
    double m_image = 0.0;
};

/// Greatest common divisor by Euclid's loop: 0 when a or b is 0, a when a == b; otherwise with x the
/// greater and y the smaller, repeats r = x % y, x = y, y = r while r > 0 and returns x.
/// \note Only positive arguments give the mathematical gcd. With a negative argument the loop stops at the
///       first remainder that is not positive: _gcd(-3, 6) is -3, _gcd(7, -4) is 3, _gcd(-4, -6) is -6.
QOR_API long _gcd(long a, long b);

/// (a / _gcd(a, b)) * b, or 0 when a or b is 0. The sign follows from _gcd's.
/// \note A product beyond the range of long wraps modulo 2^64 (two's complement) instead of overflowing;
///       for 32-bit arguments it is always exact.
QOR_API long _lcm(long a, long b);

/// Fraction of two 32-bit signed integers. A denominator of 0 marks an undefined fraction.
/// \note Arithmetic is 32-bit two's complement, as on the 32-bit machines the type was made for:
///       a numerator or denominator that leaves the 32-bit range wraps around (it never traps). Values
///       passed as long keep their low 32 bits. The sign is not normalised (see Simplify).
class QOR_API QorFrac32
{
public:
    /// 0/1.
    QorFrac32() = default;
    /// n/d as given, not simplified.
    QorFrac32(long n, long d) { Reset(n, d); }
    /// n/1.
    QorFrac32(int n) : m_numerator(n) {}
    /// A double is accepted but not converted: the result is always 0/1.
    explicit QorFrac32(double) {}
    QorFrac32(const QorFrac32&) = default;
    QorFrac32& operator=(const QorFrac32&) = default;

    /// n/d as given, not simplified.
    void Reset(long n, long d);
    long GetNumerator() const { return m_numerator; }
    long GetDenominator() const { return m_denominator; }

    /// Lowest terms: x/0 becomes 0/0, 0/x becomes 0/1, otherwise both are divided by _gcd(n, d).
    /// \note The sign lands wherever that division puts it (-3/6 becomes 1/-2), and with negative values
    ///       _gcd is not the true gcd (7/-4 becomes 2/-1, -4/-6 becomes 0/1).
    void Simplify();
    /// Rewrites the fraction over denominator d. Returns false for d = 0 or d outside the 32-bit range
    /// (fraction unchanged), and, after simplifying, for an undefined fraction or a d that is not a multiple
    /// of the denominator (the fraction stays simplified).
    char AlterDenominator(long d);

    /// Over the common denominator _lcm(d1, d2), then simplified. Unchanged when either is undefined.
    QorFrac32& operator+=(const QorFrac32& other);
    /// As +=; an equal fraction (same numerator and denominator) gives 0/1 directly.
    /// \note Undefined minus undefined stays unchanged: the denominator check comes first.
    QorFrac32& operator-=(const QorFrac32& other);
    /// n1·n2 / d1·d2, simplified. Unchanged when either is undefined.
    QorFrac32& operator*=(const QorFrac32& other);
    /// n1·d2 / d1·n2, simplified; a divisor with numerator 0 gives 0/0. Unchanged when either is undefined.
    QorFrac32& operator/=(const QorFrac32& other);

    /// 1 when both simplify to the same numerator and denominator, 0 when not, 255 when either is undefined.
    /// \note 1/2 and -1/-2 are not equal: Simplify does not normalise signs.
    unsigned char operator==(const QorFrac32& other) const;
    /// The negation of ==; 255 when either is undefined.
    unsigned char operator!=(const QorFrac32& other) const;

private:
    std::int32_t m_numerator = 0;
    std::int32_t m_denominator = 1;
};

QOR_API QorFrac32 operator+(QorFrac32 a, const QorFrac32& b);
QOR_API QorFrac32 operator-(QorFrac32 a, const QorFrac32& b);
QOR_API QorFrac32 operator*(QorFrac32 a, const QorFrac32& b);
QOR_API QorFrac32 operator/(QorFrac32 a, const QorFrac32& b);

/// Compares (l / d1)·n1 with (l / d2)·n2 where l = _lcm(d1, d2): 1 or 0, or 255 when either is undefined.
/// \note Meaningful for denominators of the same sign; 1/-2 > 1/3 answers 1.
QOR_API unsigned char operator>(const QorFrac32& a, const QorFrac32& b);
QOR_API unsigned char operator<(const QorFrac32& a, const QorFrac32& b);
QOR_API unsigned char operator>=(const QorFrac32& a, const QorFrac32& b);
QOR_API unsigned char operator<=(const QorFrac32& a, const QorFrac32& b);

/// Portable additive (lagged Fibonacci) random generator over 55 decimal states modulo 10^8: the same seed
/// gives the same sequence on every machine.
class QOR_API QorRandom
{
public:
    /// The modulus of the states.
    static constexpr long m = 100000000;
    /// The square root of m, the unit of Mult's split.
    static constexpr long m1 = 10000;
    enum : std::int32_t { kStateCount = 55 };

    /// state[0] = seed (its low 32 bits), state[i] = (Mult(state[i - 1], 38649621) + 1) mod m; index 0.
    explicit QorRandom(long seed);

    /// Advances one state and scales it: ((state / m1) · r) / m1, from 0 to r - 1 for a non-negative state.
    /// \note A negative seed can give negative states and then results from -(r - 1) to 0. The scaling is
    ///       exact for every r (a 32-bit build agrees for r up to 214748, where its product still fitted).
    long Next(long r);
    /// Advances one state: state / m, in [0, 1) for a non-negative state.
    double Next();

    /// The position (0 to 54) of the state the next call advances.
    long GetIndex() const { return m_index; }

protected:
    /// p·q mod m without forming p·q: with p = p1·m1 + p0 and q = q1·m1 + q0,
    /// (((p0·q1 + p1·q0) mod m1)·m1 + p0·q0) mod m, which is (p·q) % m with the sign of p·q.
    /// \note For the generator's multiplier and any 32-bit p every partial product fits 32 bits, so a
    ///       32-bit build computes the same states.
    static long Mult(long p, long q);

private:
    std::int32_t Step();

    std::int32_t m_state[kStateCount];
    std::int32_t m_index = 0;
};
