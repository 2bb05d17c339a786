// Parts of vectors at an array's end, and bins of packed spectra. A class's file includes this inside its unnamed namespace
// after lanes.inl and its ops file.

[[gnu::always_inline]] inline VecF LoadPart(const float* p, int count)
{
    float padded[kLanes] = {};
    __builtin_memcpy(padded, p, size_t(count) * sizeof(float));
    return Load<float, kLanes>(padded);
}

[[gnu::always_inline]] inline void StorePart(float* p, VecF v, int count)
{
    float padded[kLanes];
    Store<float, kLanes>(padded, v);
    __builtin_memcpy(p, padded, size_t(count) * sizeof(float));
}

struct Bins {
    VecF re, im;
};

// Real and imaginary parts of kLanes bins, in the order that moves within 128 bits give; InOrder puts a result right.
[[gnu::always_inline]] inline Bins BinsOf(VecF a, VecF b)
{
    return {Shuffle<float, kLanes, TakeAlternate<kLanes, 4, 0>>(a, b),
            Shuffle<float, kLanes, TakeAlternate<kLanes, 4, 1>>(a, b)};
}

[[gnu::always_inline]] inline Bins LoadBins(const float* p)
{
    return BinsOf(Load<float, kLanes>(p), Load<float, kLanes>(p + kLanes));
}

[[gnu::always_inline]] inline void StoreBins(float* p, Bins x)
{
    Store<float, kLanes>(p, Shuffle<float, kLanes, InterleaveMove<kLanes, 4, 0>>(x.re, x.im));
    Store<float, kLanes>(p + kLanes, Shuffle<float, kLanes, InterleaveMove<kLanes, 4, 1>>(x.re, x.im));
}

// The bin that a lane holds, and the lane of a bin.
constexpr int BinOfLane(int l)
{
    return (l % 4 < 2 ? 0 : kLanes / 2) + l / 4 * 2 + l % 2;
}
struct LaneOfBin {
    static constexpr int Index(int bin)
    {
        const int half = bin % (kLanes / 2);
        return half / 2 * 4 + (bin < kLanes / 2 ? 0 : 2) + half % 2;
    }
};

[[gnu::always_inline]] inline VecF InOrder(VecF v)
{
    return Shuffle<float, kLanes, LaneOfBin>(v, v);
}

[[gnu::always_inline]] inline Bins Product(Bins a, Bins b)
{
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
