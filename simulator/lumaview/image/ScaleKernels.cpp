// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/ScaleKernels.h"

#include <algorithm>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace sim::lumaview {
namespace {

constexpr int kWeightBits = 14;
static_assert(Axis::kOne == 1 << kWeightBits);
constexpr int kRowShift = kWeightBits - kMiddleBits;
constexpr int kMixShift = kWeightBits + kMiddleBits;

int16_t ToMiddle(int32_t sum) {
  return static_cast<int16_t>(std::clamp((sum + (1 << (kRowShift - 1))) >> kRowShift, -32768, 32767));
}

uint8_t ToByte(int32_t sum) {
  return static_cast<uint8_t>(std::clamp((sum + (1 << (kMixShift - 1))) >> kMixShift, 0, 255));
}

void CopyRow(const uint8_t* row, int channels, const Axis& axis, int16_t* out) {
  const uint8_t* first = row + axis.First(0) * channels;
  const int count = axis.GetCount() * channels;
  for (int i = 0; i < count; ++i) {
    out[i] = static_cast<int16_t>(first[i] << kMiddleBits);
  }
}

/// Samples [begin, end) one by one.
void MixRest(const int16_t* const* rows, const int16_t* weights, int taps, int begin, int end, uint8_t* out) {
  for (int i = begin; i < end; ++i) {
    int32_t sum = 0;
    for (int tap = 0; tap < taps; ++tap) {
      sum += weights[tap] * rows[tap][i];
    }
    out[i] = ToByte(sum);
  }
}

void CopyMixed(const int16_t* row, int count, uint8_t* out) {
  for (int i = 0; i < count; ++i) {
    out[i] = static_cast<uint8_t>(std::clamp((row[i] + (1 << (kMiddleBits - 1))) >> kMiddleBits, 0, 255));
  }
}

}  // namespace

namespace plain {

void ScaleRow(const uint8_t* row, int channels, const Axis& axis, int16_t* out) {
  for (int i = 0; i < axis.GetCount(); ++i) {
    const uint8_t* pixel = row + axis.First(i) * channels;
    const int16_t* weights = axis.Weights(i);
    for (int channel = 0; channel < channels; ++channel) {
      int32_t sum = 0;
      for (int tap = 0; tap < axis.GetTaps(); ++tap) {
        sum += weights[tap] * pixel[tap * channels + channel];
      }
      *out++ = ToMiddle(sum);
    }
  }
}

void MixRows(const int16_t* const* rows, const int16_t* weights, int taps, int count, uint8_t* out) {
  MixRest(rows, weights, taps, 0, count, out);
}

}  // namespace plain

#if defined(__SSE2__)
namespace {

/// Two neighbouring weights in each 32-bit lane, as the multiply-add of pairs wants them.
__m128i PairOfWeights(const int16_t* weights) {
  int32_t pair;
  __builtin_memcpy(&pair, weights, sizeof pair);
  return _mm_set1_epi32(pair);
}

void ScaleRowOfFour(const uint8_t* row, const Axis& axis, int16_t* out) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i half = _mm_set1_epi32(1 << (kRowShift - 1));
  const int taps = axis.GetTaps();
  for (int i = 0; i < axis.GetCount(); ++i, out += 4) {
    const uint8_t* pixel = row + axis.First(i) * 4;
    const int16_t* weights = axis.Weights(i);
    __m128i sum = half;
    for (int tap = 0; tap < taps; tap += 2, pixel += 8) {
      const __m128i two = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixel)), zero);
      const __m128i pairs = _mm_unpacklo_epi16(two, _mm_unpackhi_epi64(two, two));
      sum = _mm_add_epi32(sum, _mm_madd_epi16(pairs, PairOfWeights(weights + tap)));
    }
    const __m128i middle = _mm_srai_epi32(sum, kRowShift);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packs_epi32(middle, middle));
  }
}

/// Sums up the four lanes.
int32_t Sum(__m128i lanes) {
  lanes = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(1, 0, 3, 2)));
  return _mm_cvtsi128_si32(_mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(2, 3, 0, 1))));
}

void ScaleRowOfOne(const uint8_t* row, const Axis& axis, int16_t* out) {
  const __m128i zero = _mm_setzero_si128();
  const int taps = axis.GetTaps();
  for (int i = 0; i < axis.GetCount(); ++i) {
    const uint8_t* pixel = row + axis.First(i);
    const int16_t* weights = axis.Weights(i);
    __m128i lanes = zero;
    int tap = 0;
    for (; tap + 8 <= taps; tap += 8) {
      const __m128i eight = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixel + tap)), zero);
      lanes =
          _mm_add_epi32(lanes, _mm_madd_epi16(eight, _mm_loadu_si128(reinterpret_cast<const __m128i*>(weights + tap))));
    }
    int32_t sum = Sum(lanes);
    for (; tap < taps; ++tap) {
      sum += weights[tap] * pixel[tap];
    }
    *out++ = ToMiddle(sum);
  }
}

/// Eight samples at a time; returns how many were done.
int MixRowsByEight(const int16_t* const* rows, const int16_t* weights, int taps, int count, uint8_t* out) {
  const __m128i half = _mm_set1_epi32(1 << (kMixShift - 1));
  int i = 0;
  for (; i + 8 <= count; i += 8) {
    __m128i low = half;
    __m128i high = half;
    for (int tap = 0; tap < taps; tap += 2) {
      const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[tap] + i));
      const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[tap + 1] + i));
      const __m128i pair = PairOfWeights(weights + tap);
      low = _mm_add_epi32(low, _mm_madd_epi16(_mm_unpacklo_epi16(a, b), pair));
      high = _mm_add_epi32(high, _mm_madd_epi16(_mm_unpackhi_epi16(a, b), pair));
    }
    const __m128i words = _mm_packs_epi32(_mm_srai_epi32(low, kMixShift), _mm_srai_epi32(high, kMixShift));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(words, words));
  }
  return i;
}

#define LUMAVIEW_AVX2 __attribute__((target("avx2")))

bool HasAvx2() {
  static const bool has = __builtin_cpu_supports("avx2") != 0;
  return has;
}

/// Four taps at a time, two in each half of a register.
LUMAVIEW_AVX2 void ScaleRowOfFourByAvx2(const uint8_t* row, const Axis& axis, int16_t* out) {
  // Channel by channel, the first of two pixels beside the second.
  const __m128i pairing = _mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
  const __m256i halves = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
  const __m128i half = _mm_set1_epi32(1 << (kRowShift - 1));
  const int taps = axis.GetTaps();
  for (int i = 0; i < axis.GetCount(); ++i, out += 4) {
    const uint8_t* pixel = row + axis.First(i) * 4;
    const int16_t* weights = axis.Weights(i);
    __m256i both = _mm256_setzero_si256();
    int tap = 0;
    for (; tap + 4 <= taps; tap += 4, pixel += 16) {
      const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixel));
      const __m256i pairs = _mm256_cvtepu8_epi16(_mm_shuffle_epi8(four, pairing));
      int64_t four_weights;
      __builtin_memcpy(&four_weights, weights + tap, sizeof four_weights);
      const __m256i factors = _mm256_permutevar8x32_epi32(_mm256_set1_epi64x(four_weights), halves);
      both = _mm256_add_epi32(both, _mm256_madd_epi16(pairs, factors));
    }
    __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(both), _mm256_extracti128_si256(both, 1));
    if (tap < taps) {
      const __m128i two = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixel));
      const __m128i pairs = _mm_cvtepu8_epi16(_mm_shuffle_epi8(two, pairing));
      sum = _mm_add_epi32(sum, _mm_madd_epi16(pairs, PairOfWeights(weights + tap)));
    }
    const __m128i middle = _mm_srai_epi32(_mm_add_epi32(sum, half), kRowShift);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packs_epi32(middle, middle));
  }
}

/// Sixteen samples at a time; returns how many were done.
LUMAVIEW_AVX2 int MixRowsBySixteen(const int16_t* const* rows, const int16_t* weights, int taps, int count,
                                   uint8_t* out) {
  const __m256i half = _mm256_set1_epi32(1 << (kMixShift - 1));
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    __m256i low = half;
    __m256i high = half;
    for (int tap = 0; tap < taps; tap += 2) {
      const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[tap] + i));
      const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[tap + 1] + i));
      const __m256i pair = _mm256_broadcastd_epi32(PairOfWeights(weights + tap));
      low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), pair));
      high = _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), pair));
    }
    const __m256i words = _mm256_packs_epi32(_mm256_srai_epi32(low, kMixShift), _mm256_srai_epi32(high, kMixShift));
    const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(words, words), 0b1000);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(bytes));
  }
  return i;
}

}  // namespace
#endif

void ScaleRow(const uint8_t* row, int channels, const Axis& axis, int16_t* out) {
  if (axis.GetCount() == 0) {
    return;
  }
  if (axis.IsCopy()) {
    CopyRow(row, channels, axis, out);
    return;
  }
#if defined(__SSE2__)
  if (channels == 1) {
    ScaleRowOfOne(row, axis, out);
  } else if (HasAvx2()) {
    ScaleRowOfFourByAvx2(row, axis, out);
  } else {
    ScaleRowOfFour(row, axis, out);
  }
#else
  plain::ScaleRow(row, channels, axis, out);
#endif
}

void MixRows(const int16_t* const* rows, const int16_t* weights, int taps, int count, uint8_t* out) {
  if (taps == 1) {
    CopyMixed(rows[0], count, out);
    return;
  }
  int done = 0;
#if defined(__SSE2__)
  done =
      HasAvx2() ? MixRowsBySixteen(rows, weights, taps, count, out) : MixRowsByEight(rows, weights, taps, count, out);
#endif
  MixRest(rows, weights, taps, done, count, out);
}

}  // namespace sim::lumaview
