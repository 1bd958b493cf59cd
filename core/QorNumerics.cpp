#include "QorNumerics.h"

#include <cmath>
#include <cstdint>

namespace
{
// Two's complement wrap to 32 bits: what the 32-bit machines' long arithmetic did on overflow.
std::int32_t Wrap32(std::int64_t v)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(v)));
}

// The common denominator as a 32-bit build computes it. Both arguments are 32-bit, so _lcm is exact in
// 64 bits and its low 32 bits are the 32-bit result.
std::int32_t Lcm32(std::int32_t a, std::int32_t b)
{
    return Wrap32(_lcm(a, b));
}

// n·(l / d) in 32-bit arithmetic; the division is done in 64 bits so that INT32_MIN / -1 cannot trap.
std::int32_t Scale32(std::int32_t n, std::int32_t l, std::int32_t d)
{
    return Wrap32(static_cast<std::int64_t>(Wrap32(static_cast<std::int64_t>(l) / d)) * n);
}
} // namespace

char Complex::operator==(const Complex& other) const
{
    return m_real == other.m_real && m_image == other.m_image;
}

char Complex::operator!=(const Complex& other) const
{
    return !(*this == other);
}

Complex& Complex::operator+=(const Complex& other)
{
    m_real += other.m_real;
    m_image += other.m_image;
    return *this;
}

Complex& Complex::operator-=(const Complex& other)
{
    m_real -= other.m_real;
    m_image -= other.m_image;
    return *this;
}

Complex& Complex::operator*=(const Complex& other)
{
    // Read the operand first: other may be *this.
    const double a = m_real, b = m_image, c = other.m_real, d = other.m_image;
    m_real = a * c - b * d;
    m_image = a * d + b * c;
    return *this;
}

Complex& Complex::operator/=(const Complex& other)
{
    const double a = m_real, b = m_image, c = other.m_real, d = other.m_image;
    const double norm = c * c + d * d;
    m_real = (a * c + b * d) / norm;
    m_image = -(b * c + a * d) / norm;
    return *this;
}

Complex Complex::operator+(const Complex& other) const
{
    Complex result(*this);
    return result += other;
}

Complex Complex::operator-(const Complex& other) const
{
    Complex result(*this);
    return result -= other;
}

Complex Complex::operator*(const Complex& other) const
{
    Complex result(*this);
    return result *= other;
}

Complex Complex::operator/(const Complex& other) const
{
    Complex result(*this);
    return result /= other;
}

double Complex::GetLength() const
{
    return std::pow(m_real * m_real + m_image * m_image, 0.5);
}

double Complex::GetAngle() const
{
    return std::acos(m_real / GetLength());
}

long _gcd(long a, long b)
{
    if (a == 0 || b == 0)
        return 0;
    if (a == b)
        return a;
    long x = a > b ? a : b;
    long y = a > b ? b : a;
    // x > y throughout the first pass, so x % y is never LONG_MIN % -1; later passes have y > 0.
    long r;
    do
    {
        r = x % y;
        x = y;
        y = r;
    } while (r > 0);
    return x;
}

long _lcm(long a, long b)
{
    if (a == 0 || b == 0)
        return 0;
    const long g = _gcd(a, b);
    // Unsigned arithmetic: a quotient or product beyond long wraps instead of being undefined.
    const unsigned long q = g == -1 ? 0UL - static_cast<unsigned long>(a) : static_cast<unsigned long>(a / g);
    return static_cast<long>(q * static_cast<unsigned long>(b));
}

void QorFrac32::Reset(long n, long d)
{
    m_numerator = Wrap32(n);
    m_denominator = Wrap32(d);
}

void QorFrac32::Simplify()
{
    if (m_denominator == 0)
    {
        m_numerator = 0;
        return;
    }
    if (m_numerator == 0)
    {
        m_denominator = 1;
        return;
    }
    // Never 0 here; divided in 64 bits so that no quotient can trap.
    const std::int64_t g = _gcd(m_numerator, m_denominator);
    m_numerator = Wrap32(m_numerator / g);
    m_denominator = Wrap32(m_denominator / g);
}

char QorFrac32::AlterDenominator(long d)
{
    if (d == 0 || d != static_cast<long>(Wrap32(d)))
        return 0;
    Simplify();
    if (m_denominator == 0 || d % m_denominator != 0)
        return 0;
    m_numerator = Wrap32(static_cast<std::int64_t>(m_numerator) * (d / m_denominator));
    m_denominator = static_cast<std::int32_t>(d);
    return 1;
}

QorFrac32& QorFrac32::operator+=(const QorFrac32& other)
{
    if (m_denominator == 0 || other.m_denominator == 0)
        return *this;
    const std::int32_t n2 = other.m_numerator, d2 = other.m_denominator;
    const std::int32_t l = Lcm32(m_denominator, d2);
    m_numerator = Wrap32(static_cast<std::int64_t>(Scale32(m_numerator, l, m_denominator)) + Scale32(n2, l, d2));
    m_denominator = l;
    Simplify();
    return *this;
}

QorFrac32& QorFrac32::operator-=(const QorFrac32& other)
{
    if (m_denominator == 0 || other.m_denominator == 0)
        return *this;
    if (m_numerator == other.m_numerator && m_denominator == other.m_denominator)
    {
        m_numerator = 0;
        m_denominator = 1;
        return *this;
    }
    const std::int32_t n2 = other.m_numerator, d2 = other.m_denominator;
    const std::int32_t l = Lcm32(m_denominator, d2);
    m_numerator = Wrap32(static_cast<std::int64_t>(Scale32(m_numerator, l, m_denominator)) - Scale32(n2, l, d2));
    m_denominator = l;
    Simplify();
    return *this;
}

QorFrac32& QorFrac32::operator*=(const QorFrac32& other)
{
    if (m_denominator == 0 || other.m_denominator == 0)
        return *this;
    const std::int32_t n2 = other.m_numerator, d2 = other.m_denominator;
    m_numerator = Wrap32(static_cast<std::int64_t>(m_numerator) * n2);
    m_denominator = Wrap32(static_cast<std::int64_t>(m_denominator) * d2);
    Simplify();
    return *this;
}

QorFrac32& QorFrac32::operator/=(const QorFrac32& other)
{
    if (m_denominator == 0 || other.m_denominator == 0)
        return *this;
    const std::int32_t n2 = other.m_numerator, d2 = other.m_denominator;
    m_numerator = Wrap32(static_cast<std::int64_t>(m_numerator) * d2);
    m_denominator = Wrap32(static_cast<std::int64_t>(m_denominator) * n2);
    Simplify();
    return *this;
}

unsigned char QorFrac32::operator==(const QorFrac32& other) const
{
    if (m_denominator == 0 || other.m_denominator == 0)
        return 255;
    QorFrac32 a(*this), b(other);
    a.Simplify();
    b.Simplify();
    return a.m_numerator == b.m_numerator && a.m_denominator == b.m_denominator;
}

unsigned char QorFrac32::operator!=(const QorFrac32& other) const
{
    const unsigned char equal = *this == other;
    return equal == 255 ? 255 : !equal;
}

QorFrac32 operator+(QorFrac32 a, const QorFrac32& b)
{
    return a += b;
}

QorFrac32 operator-(QorFrac32 a, const QorFrac32& b)
{
    return a -= b;
}

QorFrac32 operator*(QorFrac32 a, const QorFrac32& b)
{
    return a *= b;
}

QorFrac32 operator/(QorFrac32 a, const QorFrac32& b)
{
    return a /= b;
}

namespace
{
// -1, 0 or 1 for a against b over their common denominator, or 255 when either is undefined.
int CompareFrac(const QorFrac32& a, const QorFrac32& b)
{
    const auto n1 = static_cast<std::int32_t>(a.GetNumerator());
    const auto d1 = static_cast<std::int32_t>(a.GetDenominator());
    const auto n2 = static_cast<std::int32_t>(b.GetNumerator());
    const auto d2 = static_cast<std::int32_t>(b.GetDenominator());
    if (d1 == 0 || d2 == 0)
        return 255;
    const std::int32_t l = Lcm32(d1, d2);
    const std::int32_t left = Scale32(n1, l, d1);
    const std::int32_t right = Scale32(n2, l, d2);
    return left < right ? -1 : (left > right ? 1 : 0);
}
} // namespace

unsigned char operator>(const QorFrac32& a, const QorFrac32& b)
{
    const int c = CompareFrac(a, b);
    return c == 255 ? 255 : c > 0;
}

unsigned char operator<(const QorFrac32& a, const QorFrac32& b)
{
    const int c = CompareFrac(a, b);
    return c == 255 ? 255 : c < 0;
}

unsigned char operator>=(const QorFrac32& a, const QorFrac32& b)
{
    const int c = CompareFrac(a, b);
    return c == 255 ? 255 : c >= 0;
}

unsigned char operator<=(const QorFrac32& a, const QorFrac32& b)
{
    const int c = CompareFrac(a, b);
    return c == 255 ? 255 : c <= 0;
}

QorRandom::QorRandom(long seed)
{
    m_state[0] = Wrap32(seed);
    for (int i = 1; i < kStateCount; ++i)
        m_state[i] = static_cast<std::int32_t>((Mult(m_state[i - 1], 38649621) + 1) % m);
}

long QorRandom::Mult(long p, long q)
{
    const long p1 = p / m1, p0 = p % m1;
    const long q1 = q / m1, q0 = q % m1;
    return (((p0 * q1 + p1 * q0) % m1) * m1 + p0 * q0) % m;
}

std::int32_t QorRandom::Step()
{
    const std::int32_t j = m_index;
    // The sum wraps to 32 bits as on a 32-bit build; only a seed near the 32-bit limits can reach it.
    const std::int32_t sum = Wrap32(static_cast<std::int64_t>(m_state[(j + 21) % kStateCount]) + m_state[j]);
    m_state[j] = static_cast<std::int32_t>(sum % m);
    m_index = (j + 1) % kStateCount;
    return m_state[j];
}

long QorRandom::Next(long r)
{
    const long q = Step() / m1;
    // (q·r) / m1 without forming q·r: with r = a·m1 + b, q·a and q·b share a sign, so the truncated
    // quotient splits exactly into q·a + (q·b) / m1, and neither part can overflow.
    const long a = r / m1, b = r % m1;
    return q * a + (q * b) / m1;
}

double QorRandom::Next()
{
    return static_cast<double>(Step()) / m;
}
