// Vectors of W values, and the moves that the kernels share. Included by each processor class's files, inside their
// unnamed namespace: the linker must never merge a copy built for one class into code that an older processor runs. For
// the same reason it includes nothing.

template <class T, int W>
struct LanesOf {
    using V [[gnu::vector_size(sizeof(T) * W)]] = T;
    using Unaligned [[gnu::vector_size(sizeof(T) * W), gnu::aligned(sizeof(T)), gnu::may_alias]] = T;
    static constexpr int kGroup = 16 / sizeof(T);   // values in 128 bits, within which moves are cheapest
};
template <class T>
struct LanesOf<T, 1> {
    using V = T;
    using Unaligned = T;
    static constexpr int kGroup = 1;
};
template <class T, int W>
using Vec = typename LanesOf<T, W>::V;

template <int... I>
struct Indices {
};
template <int N, int... I>
struct MakeIndices : MakeIndices<N - 1, N - 1, I...> {
};
template <int... I>
struct MakeIndices<0, I...> {
    using Type = Indices<I...>;
};

template <class T, int W>
[[gnu::always_inline]] inline Vec<T, W> Load(const T* p)
{
    return *reinterpret_cast<const typename LanesOf<T, W>::Unaligned*>(p);
}

template <class T, int W>
[[gnu::always_inline]] inline void Store(T* p, Vec<T, W> v)
{
    *reinterpret_cast<typename LanesOf<T, W>::Unaligned*>(p) = v;
}

// Result lane l is lane Move::Index(l) of a and b laid end to end.
template <class T, int W, class Move, int... I>
[[gnu::always_inline]] inline Vec<T, W> ShuffleBy(Vec<T, W> a, Vec<T, W> b, Indices<I...>)
{
    return __builtin_shufflevector(a, b, Move::Index(I)...);
}
template <class T, int W, class Move>
[[gnu::always_inline]] inline Vec<T, W> Shuffle(Vec<T, W> a, Vec<T, W> b)
{
    return ShuffleBy<T, W, Move>(a, b, typename MakeIndices<W>::Type{});
}

// Within each group of G: the even (odd) values of a's group, then of b's.
template <int W, int G, int Odd>
struct TakeAlternate {
    static constexpr int Index(int l)
    {
        const int in = l % G, half = G / 2;
        return (in < half ? 0 : W) + l - in + 2 * (in % half) + Odd;
    }
};
// Within each group of G: a and b alternately, from the low (high) half of the group.
template <int W, int G, int High>
struct InterleaveMove {
    static constexpr int Index(int l)
    {
        const int in = l % G;
        return (in % 2 ? W : 0) + l - in + in / 2 + High * G / 2;
    }
};
// Blocks of H values: a's even blocks with b's even ones in the gaps; and the odd ones likewise.
template <int W, int H, int Odd>
struct ExchangeBlocks {
    static constexpr int Index(int l)
    {
        const bool odd = (l & H) != 0;
        return (odd ? W : 0) + l + (Odd - int(odd)) * H;
    }
};
template <int W>
struct Reversed {
    static constexpr int Index(int l) { return W - 1 - l; }
};

template <class T, int W>
[[gnu::always_inline]] inline Vec<T, W> Reverse(Vec<T, W> v)
{
    if constexpr (W == 1)
        return v;
    else
        return Shuffle<T, W, Reversed<W>>(v, v);
}

template <class T, int W, int H>
[[gnu::always_inline]] inline void ExchangeRows(Vec<T, W>* rows)
{
    for (int i = 0; i < W; ++i)
        if (!(i & H)) {
            const Vec<T, W> a = rows[i], b = rows[i + H];
            rows[i] = Shuffle<T, W, ExchangeBlocks<W, H, 0>>(a, b);
            rows[i + H] = Shuffle<T, W, ExchangeBlocks<W, H, 1>>(a, b);
        }
}

// Transposes W rows of W values: four by four (two by two) within the groups of 128 bits, then whole groups.
template <class T, int W>
[[gnu::always_inline]] inline void Transpose(Vec<T, W>* rows)
{
    if constexpr (W > 1) {
        constexpr int G = LanesOf<T, W>::kGroup;
        if constexpr (G == 4)
            for (int i = 0; i < W; i += 4) {
                const auto a = Shuffle<T, W, InterleaveMove<W, 4, 0>>(rows[i], rows[i + 1]);
                const auto b = Shuffle<T, W, InterleaveMove<W, 4, 1>>(rows[i], rows[i + 1]);
                const auto c = Shuffle<T, W, InterleaveMove<W, 4, 0>>(rows[i + 2], rows[i + 3]);
                const auto d = Shuffle<T, W, InterleaveMove<W, 4, 1>>(rows[i + 2], rows[i + 3]);
                rows[i] = Shuffle<T, W, ExchangeBlocks<W, 2, 0>>(a, c);
                rows[i + 1] = Shuffle<T, W, ExchangeBlocks<W, 2, 1>>(a, c);
                rows[i + 2] = Shuffle<T, W, ExchangeBlocks<W, 2, 0>>(b, d);
                rows[i + 3] = Shuffle<T, W, ExchangeBlocks<W, 2, 1>>(b, d);
            }
        else
            ExchangeRows<T, W, 1>(rows);
        if constexpr (W >= 2 * G)
            ExchangeRows<T, W, G>(rows);
        if constexpr (W >= 4 * G)
            ExchangeRows<T, W, 2 * G>(rows);
    }
}
