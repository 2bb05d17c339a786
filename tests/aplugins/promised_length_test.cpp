#include "aplugins/qxvantor/promised_length.h"

#include <gtest/gtest.h>

TEST(PromisedLength, CarriesItsFractionFromPieceToPiece)
{
    PromisedLength length;
    for (int i = 0; i < 10; ++i)
        length.Take(1, 0.25);
    EXPECT_EQ(length.Frames(), 2);   // 2.5, where ten truncated quarters would be 0
    for (int i = 0; i < 3; ++i)
        length.Take(1, 0.5);
    EXPECT_EQ(length.Frames(), 4);   // 2.5 + 1.5: the rest of one factor counts on under the next
}

TEST(PromisedLength, StaysExactForDaysOfSmallPieces)
{
    // Eleven hours at 48 kHz in large pieces, then one frame at a time across the limits of what an int32 and a double's
    // mantissa hold. float(0.7) = 11744051 / 2^24, so the exact length is a product of whole numbers.
    PromisedLength length;
    int64_t frames = 0;
    for (int i = 0; i < 900; ++i, frames += 48000 * 45)
        length.Take(48000 * 45, 0.7f);
    for (int i = 0; i < 100000; ++i, ++frames)
        length.Take(1, 0.7f);
    EXPECT_EQ(length.Frames(), int64_t((__int128(frames) * 11744051) >> 24));
}
