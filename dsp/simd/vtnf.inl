// The vector table's entries in kLanes lanes. Each entry does whole vectors and then the rest in one padded vector, so a
// value's result does not depend on where in the array it stands. A class's file includes this inside its unnamed
// namespace after math.inl and packed.inl.

using VecD = Vec<double, kLanes / 2>;   // sums run in double, like the portable ones

// dst[i] = f(dst[i], src[i]); dst is read too.
template <class F>
[[gnu::always_inline]] inline void Combine(float* dst, const float* src, int32_t n, F f)
{
    int32_t i = 0;
    for (; i + kLanes <= n; i += kLanes)
        Store<float, kLanes>(dst + i, f(Load<float, kLanes>(dst + i), Load<float, kLanes>(src + i)));
    if (i < n)
        StorePart(dst + i, f(LoadPart(dst + i, n - i), LoadPart(src + i, n - i)), n - i);
}

// dst[i] = f(src[i])
template <class F>
[[gnu::always_inline]] inline void Map(float* dst, const float* src, int32_t n, F f)
{
    int32_t i = 0;
    for (; i + kLanes <= n; i += kLanes)
        Store<float, kLanes>(dst + i, f(Load<float, kLanes>(src + i)));
    if (i < n)
        StorePart(dst + i, f(LoadPart(src + i, n - i)), n - i);
}

void Zero(float* v, int32_t n)
{
    __builtin_memset(v, 0, size_t(n) * sizeof(float));
}

void MaxEvery(float* dst, const float* src, int32_t n)
{
    Combine(dst, src, n, [](VecF a, VecF b) { return a < b ? b : a; });
}

void Add(float* dst, const float* src, int32_t n)
{
    Combine(dst, src, n, [](VecF a, VecF b) { return a + b; });
}

void Sub(float* dst, const float* src, int32_t n)
{
    Combine(dst, src, n, [](VecF a, VecF b) { return a - b; });
}

void Mul(float* dst, const float* src, int32_t n)
{
    Combine(dst, src, n, [](VecF a, VecF b) { return a * b; });
}

void Div(float* dst, const float* src, int32_t n)
{
    Combine(dst, src, n, [](VecF a, VecF b) { return a / b; });
}

void AddScalar(float* dst, float c, int32_t n)
{
    Map(dst, dst, n, [c](VecF v) { return v + c; });
}

void MulScalar(float* dst, float c, int32_t n)
{
    Map(dst, dst, n, [c](VecF v) { return v * c; });
}

void AddProduct(float* dst, const float* a, const float* b, int32_t n)
{
    int32_t i = 0;
    for (; i + kLanes <= n; i += kLanes)
        Store<float, kLanes>(dst + i,
                             Load<float, kLanes>(dst + i) + Load<float, kLanes>(a + i) * Load<float, kLanes>(b + i));
    if (i < n)
        StorePart(dst + i, LoadPart(dst + i, n - i) + LoadPart(a + i, n - i) * LoadPart(b + i, n - i), n - i);
}

void Abs(float* v, int32_t n)
{
    Map(v, v, n, [](VecF x) { return AbsOf(x); });
}

void Exp(float* v, int32_t n)
{
    Map(v, v, n, [](VecF x) { return ExpOf(x); });
}

void ThresholdLT(float* v, float level, float value, int32_t n)
{
    Map(v, v, n, [level, value](VecF x) { return x < level ? VecF{} + value : x; });
}

void ThresholdGT(float* v, float level, float value, int32_t n)
{
    Map(v, v, n, [level, value](VecF x) { return x > level ? VecF{} + value : x; });
}

void ThresholdLn(float* v, float level, float value, int32_t n)
{
    Map(v, v, n, [level, value](VecF x) { return LnOf(x < level ? VecF{} + value : x); });
}

// Keeps a product apart from the sum that takes it, where the rounding between them is part of the result.
[[gnu::always_inline]] inline VecF Rounded(VecF product)
{
    asm("" : "+x"(product));
    return product;
}

// Element 0 is wrapped like all others. The turns are the truncated product, less 1 where it is negative. The roundings are
// the portable form's: what they leave adds up from frame to frame, and all classes have to drift alike.
void PrincipalArgument(float* dst, const float* src, int32_t n)
{
    Map(dst, src, n, [](VecF v) {
        const VecF x = v + 3.1415927f, product = x * -0.15915494f;
        const VecF whole = __builtin_convertvector(__builtin_convertvector(product, VecI), VecF);
        const VecF turns = product < 0.0f ? whole - 1.0f : whole;
        return Rounded(turns * 6.2831855f) + x + 3.1415927f;
    });
}

// Sums. --------------------------------------------------------------------------------------------------------------

[[gnu::always_inline]] inline VecD Widen(const float* p)
{
    return __builtin_convertvector(Load<float, kLanes / 2>(p), VecD);
}

[[gnu::always_inline]] inline double SumOf(VecD v)
{
    double sum = 0.0;
    for (int l = 0; l < kLanes / 2; ++l)
        sum += v[l];
    return sum;
}

double Total(const float* v, int32_t n)
{
    VecD sums = {};
    int32_t i = 0;
    for (; i + kLanes / 2 <= n; i += kLanes / 2)
        sums += Widen(v + i);
    double sum = SumOf(sums);
    for (; i < n; ++i)
        sum += v[i];
    return sum;
}

void Mean(const float* v, float* pOut, int32_t n)
{
    *pOut = float(Total(v, n) / n);
}

void StdDev(const float* v, float* pOut, int32_t n)
{
    const double mean = Total(v, n) / n;
    VecD sums = {};
    int32_t i = 0;
    for (; i + kLanes / 2 <= n; i += kLanes / 2) {
        const VecD d = Widen(v + i) - mean;
        sums += d * d;
    }
    double squares = SumOf(sums);
    for (; i < n; ++i)
        squares += (v[i] - mean) * (v[i] - mean);
    *pOut = float(__builtin_sqrt(squares / (n - 1)));
}

// Products of two floats are exact in double, so only the order of the additions differs from the definition.
void DotProduct(const float* a, const float* b, float* pOut, int32_t n)
{
    VecD even = {}, odd = {};
    constexpr int32_t step = kLanes / 2;
    int32_t i = 0;
    for (; i + 2 * step <= n; i += 2 * step) {
        even += Widen(a + i) * Widen(b + i);
        odd += Widen(a + i + step) * Widen(b + i + step);
    }
    double sum = SumOf(even + odd);
    for (; i < n; ++i)
        sum += double(a[i]) * b[i];
    *pOut = float(sum);
}

// Each lane keeps its first largest value; a value that is no number never wins, and as the first one never loses.
void MaxIndex(const float* v, float* pMax, int32_t* pIndex, int32_t n)
{
    VecF best = VecF{} + v[0];
    VecI where = {}, index;
    for (int l = 0; l < kLanes; ++l)
        index[l] = l;
    int32_t i = 0;
    for (; i + kLanes <= n; i += kLanes, index += kLanes) {
        const VecF x = Load<float, kLanes>(v + i);
        const VecI larger = x > best;
        best = larger ? x : best;
        where = larger ? index : where;
    }
    float maximum = best[0];
    int32_t first = where[0];
    for (int l = 1; l < kLanes; ++l)
        if (best[l] > maximum || (best[l] == maximum && where[l] < first)) {
            maximum = best[l];
            first = where[l];
        }
    for (; i < n; ++i)
        if (v[i] > maximum) {
            maximum = v[i];
            first = i;
        }
    *pMax = maximum;
    *pIndex = first;
}

// Packed spectra. ----------------------------------------------------------------------------------------------------

// dst[k] = f(re, im) over bins of a packed spectrum; bin 0 has no imaginary part. Works from the front, where an in-place
// result never overtakes what is still to be read.
template <class F>
[[gnu::always_inline]] inline void MapBins(float* dst, const float* packed, int32_t bins, F f)
{
    const VecF first = f(VecF{} + packed[0], VecF{});
    int32_t k = 0;
    for (; k + kLanes <= bins; k += kLanes) {
        const Bins x = LoadBins(packed + 2 * k);
        Store<float, kLanes>(dst + k, InOrder(f(x.re, x.im)));
    }
    if (k < bins) {
        float padded[2 * kLanes] = {};
        __builtin_memcpy(padded, packed + 2 * k, size_t(bins - k) * 2 * sizeof(float));
        const Bins x = LoadBins(padded);
        StorePart(dst + k, InOrder(f(x.re, x.im)), bins - k);
    }
    dst[0] = first[0];
}

void Phase(float* dst, const float* packed, int32_t bins)
{
    MapBins(dst, packed, bins, [](VecF re, VecF im) { return PhaseOf(re, im); });
}

void Magnitude(float* dst, const float* packed, int32_t bins)
{
    MapBins(dst, packed, bins, [](VecF re, VecF im) { return SqrtOf(re * re + im * im); });
}

void AddComplex(float* dst, const float* src, int32_t bins)
{
    Add(dst, src, 2 * bins);
}

void MulPacked(float* dst, const float* src, int32_t bins)
{
    dst[0] *= src[0];
    dst[1] *= src[1];
    int32_t k = 1;
    for (; k + kLanes <= bins; k += kLanes)
        StoreBins(dst + 2 * k, Product(LoadBins(dst + 2 * k), LoadBins(src + 2 * k)));
    for (; k < bins; ++k) {
        const float *a = dst + 2 * k, *b = src + 2 * k;
        const float re = a[0] * b[0] - a[1] * b[1], im = a[0] * b[1] + a[1] * b[0];
        dst[2 * k] = re;
        dst[2 * k + 1] = im;
    }
}

void AddProductPacked(float* dst, const float* a, const float* b, int32_t bins)
{
    dst[0] += a[0] * b[0];
    dst[1] += a[1] * b[1];
    int32_t k = 1;
    for (; k + kLanes <= bins; k += kLanes) {
        const Bins sum = LoadBins(dst + 2 * k), product = Product(LoadBins(a + 2 * k), LoadBins(b + 2 * k));
        StoreBins(dst + 2 * k, {sum.re + product.re, sum.im + product.im});
    }
    for (k *= 2; k < 2 * bins; k += 2) {
        dst[k] += a[k] * b[k] - a[k + 1] * b[k + 1];
        dst[k + 1] += a[k] * b[k + 1] + a[k + 1] * b[k];
    }
}

// im starts at bin 1.
void PackSpectrum(float* dst, const float* re, const float* im, int32_t fftSize)
{
    const int32_t half = fftSize / 2;
    dst[0] = re[0];
    dst[1] = re[half];
    int32_t k = 1;
    for (; k + kLanes <= half; k += kLanes) {
        const VecF a = Load<float, kLanes>(re + k), b = Load<float, kLanes>(im + k - 1);
        Store<float, kLanes>(dst + 2 * k, Shuffle<float, kLanes, InterleaveMove<kLanes, kLanes, 0>>(a, b));
        Store<float, kLanes>(dst + 2 * k + kLanes, Shuffle<float, kLanes, InterleaveMove<kLanes, kLanes, 1>>(a, b));
    }
    for (; k < half; ++k) {
        dst[2 * k] = re[k];
        dst[2 * k + 1] = im[k - 1];
    }
}

void UnpackSpectrum(float* re, float* im, const float* src, int32_t fftSize)
{
    const int32_t half = fftSize / 2;
    re[0] = src[0];
    re[half] = src[1];
    int32_t k = 1;
    for (; k + kLanes <= half; k += kLanes) {
        const Bins x = LoadBins(src + 2 * k);
        Store<float, kLanes>(re + k, InOrder(x.re));
        Store<float, kLanes>(im + k - 1, InOrder(x.im));
    }
    for (; k < half; ++k) {
        re[k] = src[2 * k];
        im[k - 1] = src[2 * k + 1];
    }
}
