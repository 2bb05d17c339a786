// The vector kernels in kLanes lanes. A class's file includes this inside its unnamed namespace after math.inl and
// packed.inl.

void SinCos(float* sines, float* cosines, const float* angles, int32_t n)
{
    for (int32_t i = 0; i < n; i += kLanes) {
        const int32_t count = n - i < kLanes ? n - i : kLanes;
        const VecF x = count < kLanes ? LoadPart(angles + i, count) : Load<float, kLanes>(angles + i);
        const auto both = SinCosOf(x);
        if (count < kLanes) {
            StorePart(sines + i, both.sine, count);
            StorePart(cosines + i, both.cosine, count);
        } else {
            Store<float, kLanes>(sines + i, both.sine);
            Store<float, kLanes>(cosines + i, both.cosine);
        }
    }
}

// kLanes / 2 pairs of a cosine and a sine, one load each: the gather instructions take longer.
[[gnu::always_inline]] inline VecF LoadTurns(const float* turns, const int32_t* target)
{
    using Pair [[gnu::aligned(4), gnu::may_alias]] = double;
    Vec<double, kLanes / 2> pairs;
    for (int l = 0; l < kLanes / 2; ++l)
        pairs[l] = reinterpret_cast<const Pair*>(turns)[target[l]];
    return BitsAs<VecF>(pairs);
}

void RotateBins(float* dst, const float* src, const int32_t* target, const float* turns, int32_t begin, int32_t end)
{
    int32_t k = begin;
    for (; k + kLanes <= end; k += kLanes) {
        const Bins turn = BinsOf(LoadTurns(turns, target + k), LoadTurns(turns, target + k + kLanes / 2));
        StoreBins(dst + 2 * k, Product(LoadBins(src + 2 * k), turn));
    }
    for (; k < end; ++k) {
        const float c = turns[2 * target[k]], s = turns[2 * target[k] + 1];
        const float re = src[2 * k], im = src[2 * k + 1];
        dst[2 * k] = re * c - im * s;
        dst[2 * k + 1] = im * c + re * s;
    }
}

void GatherAdd(float* dst, const float* table, const int32_t* index, const float* b, int32_t n)
{
    int32_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        VecF v;
        for (int l = 0; l < kLanes; ++l)
            v[l] = table[index[i + l]];
        Store<float, kLanes>(dst + i, v + Load<float, kLanes>(b + i));
    }
    for (; i < n; ++i)
        dst[i] = table[index[i]] + b[i];
}

void CorrelationProduct(float* out, const float* a, const float* b, int32_t begin, int32_t end)
{
    VecF sign;   // lanes alternate as their bins do
    for (int l = 0; l < kLanes; ++l)
        sign[l] = (begin + l) % 2 ? -1.0f : 1.0f;
    int32_t k = begin;
    for (; k + kLanes <= end; k += kLanes) {
        const Bins x = LoadBins(a + 2 * k), y = LoadBins(b + 2 * k);
        StoreBins(out + 2 * k, {sign * (x.re * y.re + x.im * y.im), sign * (x.im * y.re - x.re * y.im)});
    }
    for (; k < end; ++k) {
        const float one = k % 2 ? -1.0f : 1.0f;
        const float aRe = a[2 * k], aIm = a[2 * k + 1], bRe = b[2 * k], bIm = b[2 * k + 1];
        out[2 * k] = one * (aRe * bRe + aIm * bIm);
        out[2 * k + 1] = one * (aIm * bRe - aRe * bIm);
    }
}

void Weigh(float* dst, const float* src, const float* window, int32_t n)
{
    int32_t i = 0;
    for (; i + kLanes <= n; i += kLanes)
        Store<float, kLanes>(dst + i, Load<float, kLanes>(src + i) * Load<float, kLanes>(window + i));
    for (; i < n; ++i)
        dst[i] = src[i] * window[i];
}

void WindowZeroPhase(float* dst, const float* src, const float* window, int32_t n)
{
    const int32_t half = n / 2;
    Weigh(dst, src + half, window + half, half);
    Weigh(dst + half, src, window, half);
}

void OverlapAdd(float* sum, const float* frame, const float* window, int32_t n)
{
    int32_t i = 0;
    for (; i + kLanes <= n; i += kLanes)
        Store<float, kLanes>(sum + i, Load<float, kLanes>(sum + i) +
                                          Load<float, kLanes>(frame + i) * Load<float, kLanes>(window + i));
    for (; i < n; ++i)
        sum[i] += frame[i] * window[i];
}

void OverlapAddZeroPhase(float* sum, const float* frame, const float* window, int32_t n)
{
    const int32_t half = n / 2;
    OverlapAdd(sum, frame + half, window, half);
    OverlapAdd(sum + half, frame, window + half, half);
}

// Two channels go in vectors, more are left to the caches.
void Interleave(float* dst, const float* const* src, int32_t channels, int32_t frames)
{
    if (channels == 1)
        return void(__builtin_memcpy(dst, src[0], size_t(frames) * sizeof(float)));
    int32_t i = 0;
    if (channels == 2)
        for (; i + kLanes <= frames; i += kLanes) {
            const VecF a = Load<float, kLanes>(src[0] + i), b = Load<float, kLanes>(src[1] + i);
            Store<float, kLanes>(dst + 2 * i, Shuffle<float, kLanes, InterleaveMove<kLanes, kLanes, 0>>(a, b));
            Store<float, kLanes>(dst + 2 * i + kLanes, Shuffle<float, kLanes, InterleaveMove<kLanes, kLanes, 1>>(a, b));
        }
    for (int32_t c = 0; c < channels; ++c)
        for (int32_t f = i; f < frames; ++f)
            dst[size_t(f) * size_t(channels) + size_t(c)] = src[c][f];
}

void Deinterleave(float* const* dst, const float* src, int32_t channels, int32_t frames)
{
    if (channels == 1)
        return void(__builtin_memcpy(dst[0], src, size_t(frames) * sizeof(float)));
    int32_t i = 0;
    if (channels == 2)
        for (; i + kLanes <= frames; i += kLanes) {
            const Bins x = LoadBins(src + 2 * i);
            Store<float, kLanes>(dst[0] + i, InOrder(x.re));
            Store<float, kLanes>(dst[1] + i, InOrder(x.im));
        }
    for (int32_t c = 0; c < channels; ++c)
        for (int32_t f = i; f < frames; ++f)
            dst[c][f] = src[size_t(f) * size_t(channels) + size_t(c)];
}

// Cubic: eight output frames at a time, in two halves where a row of taps is 128 bits. -----------------------------

constexpr int kCubicFrames = 8;
using Vec4d = Vec<double, 4>;
using Vec8 = Vec<float, 8>;
using Vec4 = Vec<float, 4>;
using Vec4i = Vec<int32_t, 4>;

[[gnu::always_inline]] inline Vec8 Join(Vec4 low, Vec4 high)
{
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
}

struct CubicWeights {
    Vec8 h00, h01, h10, h11;
};
[[gnu::always_inline]] inline CubicWeights WeightsAt(Vec8 t)
{
    const Vec8 t2 = t * t, t3 = t2 * t;
    return {2.0f * t3 - 3.0f * t2 + 1.0f, 3.0f * t2 - 2.0f * t3, t3 - 2.0f * t2 + t, t3 - t2};
}

// Rows of four taps of eight frames, turned so that a vector holds one tap of each.
[[gnu::always_inline]] inline Vec8 CubicAt(const CubicWeights& w, const float* x, Vec4i low, Vec4i high)
{
    Vec8 row[4];
    for (int j = 0; j < 4; ++j)
        row[j] = Join(Load<float, 4>(x + low[j] - 3), Load<float, 4>(x + high[j] - 3));
    const auto a = Shuffle<float, 8, InterleaveMove<8, 4, 0>>(row[0], row[1]);
    const auto b = Shuffle<float, 8, InterleaveMove<8, 4, 1>>(row[0], row[1]);
    const auto c = Shuffle<float, 8, InterleaveMove<8, 4, 0>>(row[2], row[3]);
    const auto d = Shuffle<float, 8, InterleaveMove<8, 4, 1>>(row[2], row[3]);
    const auto x3 = Shuffle<float, 8, ExchangeBlocks<8, 2, 0>>(a, c),
               x2 = Shuffle<float, 8, ExchangeBlocks<8, 2, 1>>(a, c);
    const auto x1 = Shuffle<float, 8, ExchangeBlocks<8, 2, 0>>(b, d),
               x0 = Shuffle<float, 8, ExchangeBlocks<8, 2, 1>>(b, d);
    return w.h00 * x2 + w.h01 * x1 + w.h10 * ((x1 - x3) * 0.5f) + w.h11 * ((x0 - x2) * 0.5f);
}

[[gnu::always_inline]] inline float CubicAt(const float* at, float t)
{
    const float t2 = t * t, t3 = t2 * t;
    const float m0 = (at[-1] - at[-3]) / 2.0f, m1 = (at[0] - at[-2]) / 2.0f;
    return (2.0f * t3 - 3.0f * t2 + 1.0f) * at[-2] + (3.0f * t2 - 2.0f * t3) * at[-1] + (t3 - 2.0f * t2 + t) * m0 +
           (t3 - t2) * m1;
}

void Cubic(float* const* out, const float* const* x, int32_t channels, double position, float ratio, int32_t count)
{
    const double step = ratio;
    const Vec4d ahead = {0.0, step, 2.0 * step, 3.0 * step};
    int32_t j = 0;
    for (; j + kCubicFrames <= count; j += kCubicFrames) {
        const Vec4d low = position + ahead, high = position + 4.0 * step + ahead;
        const Vec4i lowFrame = __builtin_convertvector(low, Vec4i), highFrame = __builtin_convertvector(high, Vec4i);
        const Vec8 t = Join(__builtin_convertvector(low - __builtin_convertvector(lowFrame, Vec4d), Vec4),
                            __builtin_convertvector(high - __builtin_convertvector(highFrame, Vec4d), Vec4));
        const CubicWeights weights = WeightsAt(t);
        for (int32_t c = 0; c < channels; ++c)
            Store<float, 8>(out[c] + j, CubicAt(weights, x[c], lowFrame, highFrame));
        position += 8.0 * step;
    }
    for (; j < count; ++j, position += step) {
        const auto i = int32_t(position);
        for (int32_t c = 0; c < channels; ++c)
            out[c][j] = CubicAt(x[c] + i, float(position - i));
    }
}
