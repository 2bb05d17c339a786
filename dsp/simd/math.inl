// Elementary functions of vectors, with polynomials fitted for this file (minimax of the relative error, by iterated
// weighted least squares). A class's file includes this inside its unnamed namespace after lanes.inl, with kLanes set.

using VecF = Vec<float, kLanes>;
using VecI = Vec<int32_t, kLanes>;

template <class To, class From>
[[gnu::always_inline]] inline To BitsAs(From v)
{
    static_assert(sizeof(To) == sizeof(From));
    return reinterpret_cast<To>(v);
}

constexpr int32_t kSignBit = -0x7fffffff - 1;
constexpr float kInfinity = __builtin_inff();

[[gnu::always_inline]] inline VecF AbsOf(VecF x)
{
    return BitsAs<VecF>(BitsAs<VecI>(x) & ~kSignBit);
}

[[gnu::always_inline]] inline VecF SqrtOf(VecF x)
{
    VecF r;
    for (int l = 0; l < kLanes; ++l)
        r[l] = __builtin_sqrtf(x[l]);
    return r;
}

// ln 2 in two parts: whole numbers up to 2^9 times the first are exact.
constexpr float kLn2High = 0.693359375f, kLn2Low = -2.12194440e-4f;

// e^x = 2^n e^r with |r| at most ln(2)/2, where the polynomial errs by 3e-9. The factor 2^n goes in two halves, so that
// results round into the denormals, to 0 and to infinity as they should.
[[gnu::always_inline]] inline VecF ExpOf(VecF x)
{
    constexpr float kRound = 12582912.0f;    // 1.5 * 2^23: what is added to it becomes a whole number in the low bits
    x = x < -104.0f ? VecF{} - 104.0f : x;   // to 0
    x = x > 89.0f ? VecF{} + 89.0f : x;      // to infinity
    const VecF t = x * 1.44269504f + kRound;
    const VecF n = t - kRound;
    const VecI i = BitsAs<VecI>(t) - 0x4b400000;
    const VecF r = x - n * kLn2High - n * kLn2Low;
    VecF p = 0.001381460448f * r + 0.008368710655f;
    p = p * r + 0.04166838754f;
    p = p * r + 0.1666652068f;
    p = p * r + 0.4999999345f;
    p = p * (r * r) + r + 1.0f;
    const VecI half = i >> 1;
    return p * BitsAs<VecF>((half + 127) << 23) * BitsAs<VecF>((i - half + 127) << 23);
}

// ln x = e ln 2 + ln m with m from sqrt(1/2) to sqrt(2), where the polynomial errs by 3e-8 of the result.
[[gnu::always_inline]] inline VecF LnOf(VecF x)
{
    constexpr float kSmallest = 1.17549435e-38f;   // below it an exponent field says nothing
    const VecI tiny = x < kSmallest;
    const VecF scaled = tiny ? x * 8388608.0f : x;
    const VecI bits = BitsAs<VecI>(scaled);
    const VecI exponent = (bits - 0x3f3504f3) >> 23;   // the bits of sqrt(1/2)
    const VecF f = BitsAs<VecF>(bits - (exponent << 23)) - 1.0f;
    const VecF e = __builtin_convertvector(exponent - (tiny & 23), VecF);
    VecF p = 0.08734096753f * f - 0.143072081f;
    p = p * f + 0.1491809561f;
    p = p * f - 0.1657055604f;
    p = p * f + 0.1996206533f;
    p = p * f - 0.250017533f;
    p = p * f + 0.3333395036f;
    p = p * f - 0.4999999162f;
    const VecF y = e * kLn2High + (p * (f * f) + e * kLn2Low + f);
    const VecF outside = x == 0.0f ? VecF{} - kInfinity : VecF{} + __builtin_nanf("");
    return x > 0.0f ? (x == kInfinity ? x : y) : outside;
}

// Angle of (re, im), both finite: the arc tangent of the smaller over the larger part, then to its octant. The polynomial
// errs by 2e-8 of the result.
[[gnu::always_inline]] inline VecF PhaseOf(VecF re, VecF im)
{
    const VecF x = AbsOf(re), y = AbsOf(im);
    const VecI steep = y > x;
    const VecF small = steep ? x : y, large = steep ? y : x;
    const VecF q = large == 0.0f ? VecF{} : small / large;
    const VecF z = q * q;
    VecF p = 0.002920645333f * z - 0.01636774859f;
    p = p * z + 0.04321158546f;
    p = p * z - 0.07552192694f;
    p = p * z + 0.1066599554f;
    p = p * z - 0.1421105333f;
    p = p * z + 0.1999377265f;
    p = p * z - 0.3333315273f;
    VecF angle = p * (z * q) + q;
    angle = steep ? 1.57079633f - angle : angle;
    angle = BitsAs<VecI>(re) < 0 ? 3.14159265f - angle : angle;
    return BitsAs<VecF>(BitsAs<VecI>(angle) | (BitsAs<VecI>(im) & kSignBit));
}
