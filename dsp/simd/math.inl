// Elementary functions of vectors, with polynomials fitted for this file (minimax of the relative error, by iterated
// weighted least squares) and cut into short chains, since latency is what limits them. Against the exact values ExpOf
// errs by 1.0, LnOf by 1.3 units in the last place, PhaseOf by 2.8e-7 and by 1.7e-7 of the angle. A class's file includes
// this inside its unnamed namespace after lanes.inl and its ops file.

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
    constexpr float kRound = 12582912.0f;   // 1.5 * 2^23: what is added to it becomes a whole number in the low bits
    x = LargerOf(VecF{} - 104.0f, x);       // to 0
    x = SmallerOf(VecF{} + 89.0f, x);       // to infinity
    const VecF t = x * 1.44269504f + kRound;
    const VecF n = t - kRound;
    const VecF r = x - n * kLn2High - n * kLn2Low;
    const VecF r2 = r * r;
    const VecF high = 0.001381460448f * r2 + (0.008368710655f * r + 0.04166838754f);
    const VecF p = (high * r2 + (0.1666652068f * r + 0.4999999345f)) * r2 + r + 1.0f;
    const VecI exponent = BitsAs<VecI>(t) - 0x4b400000;
    const VecU whole = BitsAs<VecU>(exponent) << 23, half = BitsAs<VecU>(exponent >> 1) << 23;
    return BitsAs<VecF>(BitsAs<VecU>(p) + half) * BitsAs<VecF>(whole - half + 0x3f800000u);
}

// ln of a positive normal number: e ln 2 + ln m with m from sqrt(1/2) to sqrt(2), where the polynomial errs by 3e-8 of the
// result. less: 23 where x was scaled up by 2^23.
[[gnu::always_inline]] inline VecF LnOfNormal(VecF x, VecI less)
{
    const VecU bits = BitsAs<VecU>(x);
    const VecI exponent = BitsAs<VecI>(bits - 0x3f3504f3u) >> 23;   // the bits of sqrt(1/2)
    const VecF f = BitsAs<VecF>(bits - (BitsAs<VecU>(exponent) << 23)) - 1.0f;
    const VecF e = __builtin_convertvector(exponent - less, VecF);
    const VecF f2 = f * f, f4 = f2 * f2;
    const VecF low = (-0.250017533f + 0.1996206533f * f) * f2 + (0.3333395036f * f - 0.4999999162f);
    const VecF high = (0.08734096753f * f - 0.143072081f) * f2 + (0.1491809561f * f - 0.1657055604f);
    const VecF p = high * f4 + low;
    return e * kLn2High + (p * f2 + (e * kLn2Low + f));
}

[[gnu::noinline]] VecF LnOfAny(VecF x)
{
    const VecI denormal = x < 1.17549435e-38f;
    const VecF y = LnOfNormal(denormal ? x * 8388608.0f : x, denormal & 23);
    const VecF outside = x == 0.0f ? VecF{} - kInfinity : VecF{} + __builtin_nanf("");
    return x > 0.0f ? (x == kInfinity ? x : y) : outside;
}

[[gnu::always_inline]] inline VecF LnOf(VecF x)
{
    // Between the bits of the smallest normal number and of infinity; everything else turns negative here or there.
    const VecU bits = BitsAs<VecU>(x);
    if (AnyOf(BitsAs<VecI>((bits - 0x00800000u) | (0x7f7fffffu - bits))))
        return LnOfAny(x);
    return LnOfNormal(x, VecI{});
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
    const VecF z2 = z * z;
    const VecF low = (0.1999377265f - 0.1421105333f * z) * z + -0.3333315273f;
    const VecF high = (0.002920645333f * z - 0.01636774859f) * z2 + (0.04321158546f * z - 0.07552192694f);
    const VecF p = (high * z + 0.1066599554f) * (z2 * z) + low;
    VecF angle = p * (z * q) + q;
    angle = steep ? 1.57079633f - angle : angle;
    angle = BitsAs<VecI>(re) < 0 ? 3.14159265f - angle : angle;
    return BitsAs<VecF>(BitsAs<VecI>(angle) | (BitsAs<VecI>(im) & kSignBit));
}

struct SineAndCosine {
    VecF sine, cosine;
};

// The nearest multiple of a quarter turn is taken off in three parts, exactly for multiples below 2^9 and closely far
// beyond; on what is left the polynomials err by 4e-9.
[[gnu::always_inline]] inline SineAndCosine SinCosOf(VecF x)
{
    constexpr float kRound = 12582912.0f;   // as in ExpOf
    const VecF t = x * 0.636619772f + kRound;
    const VecF n = t - kRound;
    const VecU quarter = BitsAs<VecU>(t);   // its low bits
    const VecF r = x - n * 1.5703125f - n * 4.837512969970703125e-4f - n * 7.54978995489188e-8f;
    const VecF z = r * r;
    const VecF s = (z * (-0.0001951528701f * z + 0.008332160796f) - 0.1666665461f) * (z * r) + r;
    const VecF c = ((2.443844264e-5f * z - 0.001388736742f) * z + 0.04166664686f) * (z * z) + (1.0f - 0.5f * z);
    const VecI odd = (quarter & 1u) != 0u;
    const VecU sineSign = (quarter & 2u) << 30, cosineSign = ((quarter + 1u) & 2u) << 30;
    return {BitsAs<VecF>(BitsAs<VecU>(odd ? c : s) ^ sineSign), BitsAs<VecF>(BitsAs<VecU>(odd ? s : c) ^ cosineSign)};
}
