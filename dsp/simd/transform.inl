// The transform's arithmetic, for any sample type and number of lanes; dsp/transform_kernel.h tells the method. A class's
// file includes this inside its unnamed namespace, after lanes.inl.

template <class T, int W>
struct Points {
    Vec<T, W> re, im;
};

template <class T, int W>
[[gnu::always_inline]] inline Points<T, W> operator+(Points<T, W> a, Points<T, W> b)
{
    return {a.re + b.re, a.im + b.im};
}
template <class T, int W>
[[gnu::always_inline]] inline Points<T, W> operator-(Points<T, W> a, Points<T, W> b)
{
    return {a.re - b.re, a.im - b.im};
}
// F: a vector, or one value for all lanes.
template <class T, int W, class F>
[[gnu::always_inline]] inline Points<T, W> Times(Points<T, W> a, F re, F im)
{
    return {a.re * re - a.im * im, a.re * im + a.im * re};
}
template <class T, int W>
[[gnu::always_inline]] inline Points<T, W> TimesMinusI(Points<T, W> a)
{
    return {a.im, -a.re};
}

// The inverse transform is the forward one with real and imaginary parts exchanged at both ends.
template <class T, int W, bool kInverse>
[[gnu::always_inline]] inline Points<T, W> LoadInterleaved(const T* p)
{
    Points<T, W> x;
    if constexpr (W == 1) {
        x = {p[0], p[1]};
    } else {
        constexpr int G = LanesOf<T, W>::kGroup;
        const auto a = Load<T, W>(p), b = Load<T, W>(p + W);
        x = {Shuffle<T, W, TakeAlternate<W, G, 0>>(a, b), Shuffle<T, W, TakeAlternate<W, G, 1>>(a, b)};
    }
    return kInverse ? Points<T, W>{x.im, x.re} : x;
}

template <class T, int W, bool kInverse>
[[gnu::always_inline]] inline void StoreInterleaved(T* p, Points<T, W> x)
{
    const auto re = kInverse ? x.im : x.re, im = kInverse ? x.re : x.im;
    if constexpr (W == 1) {
        p[0] = re;
        p[1] = im;
    } else {
        constexpr int G = LanesOf<T, W>::kGroup;
        Store<T, W>(p, Shuffle<T, W, InterleaveMove<W, G, 0>>(re, im));
        Store<T, W>(p + W, Shuffle<T, W, InterleaveMove<W, G, 1>>(re, im));
    }
}

template <class T, int W>
[[gnu::always_inline]] inline Points<T, W> LoadColumn(const T* work, int column)
{
    const T* p = work + size_t(column) * 2 * W;
    return {Load<T, W>(p), Load<T, W>(p + W)};
}

template <class T, int W>
[[gnu::always_inline]] inline void StoreColumn(T* work, int column, Points<T, W> x)
{
    T* p = work + size_t(column) * 2 * W;
    Store<T, W>(p, x.re);
    Store<T, W>(p + W, x.im);
}

// R-point transforms in registers, input and output in natural order. -------------------------------------------------

constexpr double kHalfRoot = 0.70710678118654752440;   // cos(pi / 4)
constexpr double kCos8 = 0.92387953251128675613;       // cos(pi / 8)
constexpr double kSin8 = 0.38268343236508977173;

template <class T, int W>
[[gnu::always_inline]] inline void Dft4(Points<T, W>& a, Points<T, W>& b, Points<T, W>& c, Points<T, W>& d)
{
    const auto s = a + c, t = a - c, u = b + d, v = TimesMinusI(b - d);
    a = s + u;
    b = t + v;
    c = s - u;
    d = t - v;
}

// x times exp(-i pi / 4), and exp(-3 i pi / 4)
template <class T, int W>
[[gnu::always_inline]] inline Points<T, W> TurnEighth(Points<T, W> x)
{
    const T h = T(kHalfRoot);
    return {(x.re + x.im) * h, (x.im - x.re) * h};
}
template <class T, int W>
[[gnu::always_inline]] inline Points<T, W> TurnThreeEighths(Points<T, W> x)
{
    const T h = T(kHalfRoot);
    return {(x.im - x.re) * h, (x.re + x.im) * -h};
}

template <class T, int W, int R>
[[gnu::always_inline]] inline void Dft(Points<T, W>* x)
{
    if constexpr (R == 2) {
        const auto a = x[0], b = x[1];
        x[0] = a + b;
        x[1] = a - b;
    } else if constexpr (R == 4) {
        Dft4(x[0], x[1], x[2], x[3]);
    } else if constexpr (R > 4) {
        Points<T, W> even[R / 2], odd[R / 2];
        for (int i = 0; i < R / 2; ++i) {
            even[i] = x[2 * i];
            odd[i] = x[2 * i + 1];
        }
        Dft<T, W, R / 2>(even);
        Dft<T, W, R / 2>(odd);
        if constexpr (R == 16) {
            odd[1] = Times(odd[1], T(kCos8), T(-kSin8));
            odd[3] = Times(odd[3], T(kSin8), T(-kCos8));
            odd[5] = Times(odd[5], T(-kSin8), T(-kCos8));
            odd[7] = Times(odd[7], T(-kCos8), T(-kSin8));
        }
        constexpr int step = R / 8;
        odd[step] = TurnEighth(odd[step]);
        odd[2 * step] = TimesMinusI(odd[2 * step]);
        odd[3 * step] = TurnThreeEighths(odd[3 * step]);
        for (int i = 0; i < R / 2; ++i) {
            x[i] = even[i] + odd[i];
            x[i + R / 2] = even[i] - odd[i];
        }
    }
}

// Stages of the L-point transform. -----------------------------------------------------------------------------------

// One butterfly; the last stage has no twiddles.
template <class T, int W, int R, bool kLast>
[[gnu::always_inline]] inline void FinishButterfly(Points<T, W>* x, T* work, int p, int stride, const T* twiddles)
{
    Dft<T, W, R>(x);
    StoreColumn<T, W>(work, p, x[0]);
    for (int s = 1; s < R; ++s) {
        const T* w = twiddles + 2 * (s - 1);
        StoreColumn<T, W>(work, p + s * stride, kLast ? x[s] : Times(x[s], w[0], w[1]));
    }
}

template <class T, int W, int R, bool kLast>
void StagePass(T* work, int length, const T* twiddles)
{
    const int stride = length / R;
    for (int p = 0; p < stride; ++p, twiddles += 2 * (R - 1)) {
        Points<T, W> x[R];
        for (int r = 0; r < R; ++r)
            x[r] = LoadColumn<T, W>(work, p + r * stride);
        FinishButterfly<T, W, R, kLast>(x, work, p, stride, twiddles);
    }
}

// The first stage reads the caller's interleaved points.
template <class T, int W, int R, bool kInverse>
void FirstPass(T* work, const T* in, int length, const T* twiddles)
{
    const int stride = length / R;
    for (int p = 0; p < stride; ++p, twiddles += 2 * (R - 1)) {
        Points<T, W> x[R];
        for (int r = 0; r < R; ++r)
            x[r] = LoadInterleaved<T, W, kInverse>(in + size_t(p + r * stride) * 2 * W);
        FinishButterfly<T, W, R, false>(x, work, p, stride, twiddles);
    }
}

template <class T, int W, int R>
void BlocksPass(T* work, int columns, int length, const T* twiddles)
{
    if (length == R)
        for (int block = 0; block < columns; block += length)
            StagePass<T, W, R, true>(work + size_t(block) * 2 * W, length, twiddles);
    else
        for (int block = 0; block < columns; block += length)
            StagePass<T, W, R, false>(work + size_t(block) * 2 * W, length, twiddles);
}

template <class T, int W>
void StageOver(const TransformTables<T>& t, int stage, T* work, int columns, int length)
{
    const T* twiddles = t.stageTwiddles[stage];
    switch (t.radix[stage]) {
    case 8:
        return BlocksPass<T, W, 8>(work, columns, length, twiddles);
    case 4:
        return BlocksPass<T, W, 4>(work, columns, length, twiddles);
    default:
        return BlocksPass<T, W, 2>(work, columns, length, twiddles);
    }
}

constexpr int kNearBytes = 16384;   // half of a first-level cache: what fits goes through its stages together

template <class T, int W>
void Stages(const TransformTables<T>& t, int stage, T* work, int columns)
{
    if (columns * int(sizeof(T)) * 2 * W <= kNearBytes) {
        for (int length = columns; stage < t.stageCount; length /= t.radix[stage++])
            StageOver<T, W>(t, stage, work, columns, length);
        return;
    }
    if (stage == t.stageCount)
        return;
    StageOver<T, W>(t, stage, work, columns, columns);
    const int part = columns / t.radix[stage];
    for (int begin = 0; begin < columns; begin += part)
        Stages<T, W>(t, stage + 1, work + size_t(begin) * 2 * W, part);
}

// From W columns at a time to W runs of W neighbouring frequencies.
template <class T, int W, bool kInverse>
void LanesPass(const TransformTables<T>& t, T* out, const T* work)
{
    const T* twiddles = t.laneTwiddles;
    for (int k = 0; k < t.columns; k += W, twiddles += 2 * W * (W - 1)) {
        Vec<T, W> re[W], im[W];
        for (int i = 0; i < W; ++i) {
            const auto column = LoadColumn<T, W>(work, int(t.order[k + i]));
            re[i] = column.re;
            im[i] = column.im;
        }
        Transpose<T, W>(re);
        Transpose<T, W>(im);
        Points<T, W> x[W];
        for (int i = 0; i < W; ++i) {
            constexpr int G = LanesOf<T, W>::kGroup, H = G / 2 > 0 ? G / 2 : 1;
            // Row i holds the lane whose points are w: see LaneOrder.
            const int group = i / G, in = i % G;
            const int w = W == 1 ? 0 : (in < H ? group * H : W / 2 + group * H) + in % H;
            const T* f = twiddles + 2 * W * (w - 1);
            x[w] = {re[i], im[i]};
            if (w > 0)
                x[w] = Times(x[w], Load<T, W>(f), Load<T, W>(f + W));
        }
        Dft<T, W, W>(x);
        for (int j = 0; j < W; ++j)
            StoreInterleaved<T, W, kInverse>(out + 2 * (size_t(k) + size_t(j) * size_t(t.columns)), x[j]);
    }
}

template <class T, int W, bool kInverse>
void ComplexTransform(const TransformTables<T>& t, T* out, const T* in, T* work)
{
    if (t.stageCount == 0) {   // one point
        out[0] = in[0];
        out[1] = in[1];
        return;
    }
    switch (t.radix[0]) {
    case 8:
        FirstPass<T, W, 8, kInverse>(work, in, t.columns, t.stageTwiddles[0]);
        break;
    case 4:
        FirstPass<T, W, 4, kInverse>(work, in, t.columns, t.stageTwiddles[0]);
        break;
    default:
        FirstPass<T, W, 2, kInverse>(work, in, t.columns, t.stageTwiddles[0]);
    }
    const int part = t.columns / t.radix[0];
    for (int begin = 0; begin < t.columns; begin += part)
        Stages<T, W>(t, 1, work + size_t(begin) * 2 * W, part);
    LanesPass<T, W, kInverse>(t, out, work);
}

// Real data. Z is the transform of x[2n] + i x[2n + 1]; with e = Z[k] + conj Z[M - k], o = Z[k] - conj Z[M - k] and
// h = exp(-2 pi i k / N) / 2: X[k] = e/2 - i h o, X[M - k] = conj(e/2 + i h o). k runs from 1 to M/2, where the two
// blocks of the last step share one point and agree on it. ------------------------------------------------------------

template <class T, int W>
[[gnu::always_inline]] inline void StoreMirrored(T* p, Points<T, W> x)
{
    StoreInterleaved<T, W, false>(p, {Reverse<T, W>(x.re), Reverse<T, W>(x.im)});
}

template <class T, int W>
struct SumAndDifference {
    Points<T, W> sum, difference;   // of point k and the conjugate of point M - k
};

template <class T, int W>
[[gnu::always_inline]] inline SumAndDifference<T, W> LoadPair(const T* p, const T* mirrored)
{
    const auto a = LoadInterleaved<T, W, false>(p), b = LoadInterleaved<T, W, false>(mirrored);
    const Points<T, W> c = {Reverse<T, W>(b.re), -Reverse<T, W>(b.im)};
    return {a + c, a - c};
}

template <class T, int W>
void RealForward(const TransformTables<T>& t, T* out, const T* in, T* work)
{
    ComplexTransform<T, W, false>(t, out, in, work);
    const T re = out[0], im = out[1];
    out[0] = re + im;
    out[1] = re - im;
    const T* h = t.realTwiddles;
    T* low = out + 2;
    T* high = out + 2 * size_t(t.points) - 2 * W;
    for (int k = 1; k <= t.points / 2; k += W, low += 2 * W, high -= 2 * W, h += 2 * W) {
        const auto [e, o] = LoadPair<T, W>(low, high);
        const auto u = Times(o, Load<T, W>(h), Load<T, W>(h + W));
        const T half = T(0.5);
        StoreInterleaved<T, W, false>(low, {e.re * half + u.im, e.im * half - u.re});
        StoreMirrored<T, W>(high, {e.re * half - u.im, -(e.im * half) - u.re});
    }
}

// The same steps backwards, twice the size: Z[k] = e + 2 i conj(h) o, Z[M - k] = conj(e) + 2 i h conj(o), here with e and
// o of X.
template <class T, int W>
void RealInverse(const TransformTables<T>& t, T* out, const T* in, T* work)
{
    const T first = in[0], nyquist = in[1];
    out[0] = first + nyquist;
    out[1] = first - nyquist;
    const T* h = t.realTwiddles;
    size_t low = 2, high = 2 * size_t(t.points) - 2 * W;
    for (int k = 1; k <= t.points / 2; k += W, low += 2 * W, high -= 2 * W, h += 2 * W) {
        const auto [e, o] = LoadPair<T, W>(in + low, in + high);
        const auto u = Times(o + o, Load<T, W>(h), -Load<T, W>(h + W));
        StoreInterleaved<T, W, false>(out + low, {e.re - u.im, e.im + u.re});
        StoreMirrored<T, W>(out + high, {e.re + u.im, u.re - e.im});
    }
    ComplexTransform<T, W, true>(t, out, out, work);
}

template <class T, int W>
constexpr TransformKernel<T> KernelOf()
{
    return {W, ComplexTransform<T, W, false>, ComplexTransform<T, W, true>, RealForward<T, W>, RealInverse<T, W>};
}
