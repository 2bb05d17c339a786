// The vector kernels behind the search for peaks, in kLanes lanes. A class's file includes this inside its unnamed
// namespace after vector_kernels.inl.

// Next to 1.5 x 2^23 a float has whole numbers only: the sum rounds to the nearest, halves to the even one, and holds it
// in its lowest bits. For values below 2^22.
constexpr float kToWhole = 12582912.0f;
constexpr int32_t kToWholeBits = 0x4b400000;

void PointBins(int32_t* target, uint64_t* pointsDown, const float* advance, float bins, float turn, int32_t n)
{
    const float last = bins * 0.5f - 1.0f;
    VecI bin;
    for (int l = 0; l < kLanes; ++l)
        bin[l] = l;
    uint64_t word = 0;
    int32_t k = 0;
    for (; k + kLanes <= n; k += kLanes, bin += kLanes) {
        const VecF t = Load<float, kLanes>(advance + k) * bins / turn;
        const VecF pointed = t > 0.5f ? SmallerOf(t, VecF{} + last) : __builtin_convertvector(bin, VecF);
        const VecI whole = BitsAs<VecI>(pointed + kToWhole) - kToWholeBits;
        Store<int32_t, kLanes>(target + k, whole);
        word |= uint64_t(BitsOf(whole <= bin)) << k % 64;
        if ((k + kLanes) % 64 == 0) {
            pointsDown[k / 64] = word;
            word = 0;
        }
    }
    for (; k < n; ++k) {
        const float t = advance[k] * bins / turn;
        const float pointed = t > 0.5f ? (t < last ? t : last) : float(k);
        target[k] = __builtin_bit_cast(int32_t, pointed + kToWhole) - kToWholeBits;
        word |= uint64_t(target[k] <= k) << k % 64;
    }
    if (n % 64 != 0)
        pointsDown[n / 64] = word;
}

using Vec2d = Vec<double, 2>;
[[gnu::always_inline]] inline Vec2d LowPair(Vec4 v)
{
    return __builtin_convertvector(__builtin_shufflevector(v, v, 0, 1), Vec2d);
}
[[gnu::always_inline]] inline Vec4 HighHalf(Vec4 v)
{
    return __builtin_shufflevector(v, v, 2, 3, 2, 3);
}

// The sums of four bins are independent of what came before, so that only one addition in four waits for the last one.
void SumEnergies(BinEnergy* below, const float* magnitude, const float* reference, float floor, int32_t n)
{
    Vec2d sum = {};   // change, reference
    int32_t k = 0;
    for (; k + 4 <= n; k += 4) {
        const Vec4 r = Load<float, 4>(reference + k), none = {};
        const Vec4 d = BitsAs<Vec4>(BitsAs<Vec4i>(Load<float, 4>(magnitude + k) - r) & ~kSignBit);
        const Vec4 c = d > floor ? d * d : none, e = d > floor ? r * r : none;
        const Vec4 low = Shuffle<float, 4, InterleaveMove<4, 4, 0>>(c, e);
        const Vec4 high = Shuffle<float, 4, InterleaveMove<4, 4, 1>>(c, e);
        const Vec2d one = LowPair(low), two = one + LowPair(HighHalf(low));
        const Vec2d third = LowPair(high), three = two + third, four = two + (third + LowPair(HighHalf(high)));
        double* const to = &below[k + 1].change;
        Store<double, 2>(to, sum + one);
        Store<double, 2>(to + 2, sum + two);
        Store<double, 2>(to + 4, sum + three);
        sum += four;
        Store<double, 2>(to + 6, sum);
    }
    for (; k < n; ++k) {
        const float rise = magnitude[k] - reference[k], d = rise < 0.0f ? -rise : rise;
        const float c = d * d, e = reference[k] * reference[k];
        sum += d > floor ? Vec2d{c, e} : Vec2d{};
        below[k + 1] = {sum[0], sum[1]};
    }
}

void RegionEnds(int32_t* ends, const int32_t* target, const int32_t* peaks, int32_t count, int32_t n)
{
    for (int32_t i = 0; i < count; ++i) {
        const int32_t peak = peaks[i];
        int32_t k = peak + 1;
        uint32_t beyond = 0;
        for (; beyond == 0 && k + kLanes <= n; k += kLanes)
            beyond = BitsOf(Load<int32_t, kLanes>(target + k) > peak);
        if (beyond != 0)
            k += __builtin_ctz(beyond) - kLanes;
        else
            while (k < n && target[k] <= peak)
                ++k;
        ends[i] = k;
    }
}
