// Compiled for AVX2 and FMA. Only functions of this file and intrinsics are called: an inline
// function shared with other files might be kept in this version and run on a lesser processor.
#include "reading/kernels.h"

#if defined(__AVX2__) && defined(__FMA__)

#include <immintrin.h>

namespace tandrel {

namespace {

constexpr int kGroup = PackedMatrix::kGroup;
constexpr int kQuad = PackedMatrix::kQuad;
constexpr int kHalf = kGroup / 2;  // outputs in one register of sums
constexpr int kRowsAtOnce = 4;

inline __m256 curve(__m256 x) {
    const __m256 limit = _mm256_set1_ps(4.9f);
    x = _mm256_max_ps(_mm256_min_ps(x, limit), _mm256_sub_ps(_mm256_setzero_ps(), limit));
    const __m256 y = _mm256_mul_ps(x, x);
    __m256 above = _mm256_add_ps(_mm256_set1_ps(378.f), y);
    above = _mm256_fmadd_ps(y, above, _mm256_set1_ps(17325.f));
    above = _mm256_mul_ps(x, _mm256_fmadd_ps(y, above, _mm256_set1_ps(135135.f)));
    __m256 below = _mm256_fmadd_ps(y, _mm256_set1_ps(28.f), _mm256_set1_ps(3150.f));
    below = _mm256_fmadd_ps(y, below, _mm256_set1_ps(62370.f));
    below = _mm256_fmadd_ps(y, below, _mm256_set1_ps(135135.f));
    // One step of Newton's method makes the processor's rough reciprocal exact enough.
    const __m256 rough = _mm256_rcp_ps(below);
    const __m256 error = _mm256_fnmadd_ps(below, rough, _mm256_set1_ps(2.f));
    return _mm256_mul_ps(above, _mm256_mul_ps(rough, error));
}

inline __m256 sigmoid(__m256 x) {
    const __m256 half = _mm256_set1_ps(0.5f);
    return _mm256_fmadd_ps(half, curve(_mm256_mul_ps(half, x)), half);
}

// Stores eight values of -1..1 as 8-bit integers.
inline void storeQuantised(__m256 x, std::int8_t* to) {
    const __m256i whole = _mm256_cvtps_epi32(_mm256_mul_ps(x, _mm256_set1_ps(127.f)));
    const __m128i words =
        _mm_packs_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi16(words, words));
}

// Two registers with two partial sums for each of four outputs become eight sums in order.
inline __m256i finished(__m256i first, __m256i second) {
    return _mm256_permute4x64_epi64(_mm256_hadd_epi32(first, second), 0b11011000);
}

inline __m256i widened(const std::int8_t* bytes) {
    return _mm256_cvtepi8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

inline __m256i fourInputs(const std::int16_t* inputs) {
    long long quad;
    __builtin_memcpy(&quad, inputs, sizeof quad);
    return _mm256_set1_epi64x(quad);
}

inline __m256 scaled(__m256i sums, const PackedMatrix& matrix, int at) {
    return _mm256_fmadd_ps(_mm256_cvtepi32_ps(sums), _mm256_loadu_ps(matrix.scales() + at),
                           _mm256_loadu_ps(matrix.biases() + at));
}

// For many rows at once, which share the weights' widening to 16 bits.
template <int kRows>
void multiplyRows(const PackedMatrix& matrix, const std::int8_t* rows, int rowBytes, float* out) {
    alignas(32) std::int16_t inputs[kRows][PackedMatrix::kMostInputs + kGroup];
    for (int r = 0; r < kRows; ++r) {
        for (int k = 0; k < matrix.inputs(); k += kGroup) {
            _mm256_store_si256(reinterpret_cast<__m256i*>(&inputs[r][k]),
                               widened(rows + static_cast<std::ptrdiff_t>(r) * rowBytes + k));
        }
    }
    const int quads = matrix.quads();
    for (int at = 0; at < matrix.paddedOutputs(); at += kHalf) {
        const std::int8_t* weights = matrix.group(at / kGroup) + at % kGroup * kQuad;
        __m256i first[kRows], second[kRows];
        for (int r = 0; r < kRows; ++r) first[r] = second[r] = _mm256_setzero_si256();
        for (int q = 0; q < quads; ++q, weights += kGroup * kQuad) {
            const __m256i low = widened(weights), high = widened(weights + kHalf * kQuad / 2);
            for (int r = 0; r < kRows; ++r) {
                const __m256i quad = fourInputs(&inputs[r][q * kQuad]);
                first[r] = _mm256_add_epi32(first[r], _mm256_madd_epi16(low, quad));
                second[r] = _mm256_add_epi32(second[r], _mm256_madd_epi16(high, quad));
            }
        }
        for (int r = 0; r < kRows; ++r) {
            _mm256_storeu_ps(out + static_cast<std::ptrdiff_t>(r) * matrix.paddedOutputs() + at,
                             scaled(finished(first[r], second[r]), matrix, at));
        }
    }
}

inline __m256i fourBytes(const std::int8_t* bytes) {
    int quad;
    __builtin_memcpy(&quad, bytes, sizeof quad);
    return _mm256_set1_epi32(quad);
}

// For one row, whose weights are used once: the products of 8 bits, with the input's sign moved to
// the weight since one factor has none. Both are within +-127, so that two fit into 16 bits.
void multiplyRow(const PackedMatrix& matrix, const std::int8_t* row, float* out) {
    const int quads = matrix.quads();
    const __m256i ones = _mm256_set1_epi16(1);
    for (int at = 0; at < matrix.paddedOutputs(); at += kGroup) {
        const std::int8_t* weights = matrix.group(at / kGroup);
        __m256i low = _mm256_setzero_si256(), high = _mm256_setzero_si256();
        for (int q = 0; q < quads; ++q, weights += kGroup * kQuad) {
            const __m256i inputs = fourBytes(row + q * kQuad);
            const __m256i sizes = _mm256_abs_epi8(inputs);
            const auto sums = [&](const std::int8_t* from) {
                const __m256i given = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
                const __m256i pairs = _mm256_maddubs_epi16(sizes, _mm256_sign_epi8(given, inputs));
                return _mm256_madd_epi16(pairs, ones);
            };
            low = _mm256_add_epi32(low, sums(weights));
            high = _mm256_add_epi32(high, sums(weights + kHalf * kQuad));
        }
        _mm256_storeu_ps(out + at, scaled(low, matrix, at));
        _mm256_storeu_ps(out + at + kHalf, scaled(high, matrix, at + kHalf));
    }
}

void multiply(const PackedMatrix& matrix, const std::int8_t* rows, int rowBytes, int count,
              float* out) {
    for (; count >= kRowsAtOnce; count -= kRowsAtOnce) {
        multiplyRows<kRowsAtOnce>(matrix, rows, rowBytes, out);
        rows += static_cast<std::ptrdiff_t>(kRowsAtOnce) * rowBytes;
        out += static_cast<std::ptrdiff_t>(kRowsAtOnce) * matrix.paddedOutputs();
    }
    if (count == 3) multiplyRows<3>(matrix, rows, rowBytes, out);
    if (count == 2) multiplyRows<2>(matrix, rows, rowBytes, out);
    if (count == 1) multiplyRow(matrix, rows, out);
}

void lstmCell(const float* gates, int size, float* state, std::int8_t* output) {
    const __m256 limit = _mm256_set1_ps(100.f);
    const __m256 lower = _mm256_set1_ps(-100.f);
    for (int i = 0; i < size; i += kHalf) {
        const __m256 candidate = curve(_mm256_loadu_ps(gates + i));
        const __m256 in = sigmoid(_mm256_loadu_ps(gates + size + i));
        const __m256 forget = sigmoid(_mm256_loadu_ps(gates + 2 * size + i));
        const __m256 outGate = sigmoid(_mm256_loadu_ps(gates + 3 * size + i));
        const __m256 kept = _mm256_mul_ps(_mm256_loadu_ps(state + i), forget);
        const __m256 sum = _mm256_fmadd_ps(candidate, in, kept);
        const __m256 next = _mm256_max_ps(_mm256_min_ps(sum, limit), lower);
        _mm256_storeu_ps(state + i, next);
        storeQuantised(_mm256_mul_ps(curve(next), outGate), output + i);
    }
}

// The sums of the window whose first column begins at `taps`, eight outputs from `at` on.
inline __m256i windowSums(const __m256i weights[3][4], int at, const __m256i columns[3]) {
    __m256i low = _mm256_setzero_si256(), high = low;
    for (int q = 0; q < 3; ++q) {
        low = _mm256_add_epi32(low, _mm256_madd_epi16(weights[q][at / 4], columns[q]));
        high = _mm256_add_epi32(high, _mm256_madd_epi16(weights[q][at / 4 + 1], columns[q]));
    }
    return _mm256_hadd_epi32(low, high);
}

inline __m256i columnTaps(const std::int8_t* taps) {
    int quad;
    __builtin_memcpy(&quad, taps, sizeof quad);
    return _mm256_cvtepi8_epi16(_mm_set1_epi32(quad));
}

void convolve(const PackedMatrix& matrix, const std::int8_t* image, int steps,
              std::int8_t* output) {
    constexpr int kPool = Kernels::kPool, kColumn = Kernels::kColumnBytes;
    __m256i weights[3][4];
    for (int q = 0; q < 3; ++q) {
        for (int part = 0; part < 4; ++part) {
            weights[q][part] = widened(matrix.group(0) + q * kGroup * kQuad + part * 16);
        }
    }
    for (int step = 0; step < steps; ++step) {
        for (int y = 0; y < Kernels::kPooledRows; ++y, output += kGroup) {
            __m256i most[2] = {_mm256_set1_epi32(INT32_MIN), _mm256_set1_epi32(INT32_MIN)};
            for (int dy = 0; dy < kPool; ++dy) {
                __m256i columns[kPool + 2];
                for (int c = 0; c < kPool + 2; ++c) {
                    const int column = step * kPool + c;
                    columns[c] = columnTaps(image + column * kColumn + y * kPool + dy);
                }
                for (int dx = 0; dx < kPool; ++dx) {
                    most[0] = _mm256_max_epi32(most[0], windowSums(weights, 0, columns + dx));
                    most[1] = _mm256_max_epi32(most[1], windowSums(weights, 8, columns + dx));
                }
            }
            for (int part = 0; part < 2; ++part) {
                const __m256i sums = _mm256_permute4x64_epi64(most[part], 0b11011000);
                storeQuantised(curve(scaled(sums, matrix, part * kHalf)), output + part * kHalf);
            }
        }
    }
}

// Eight pixels: products of neighbouring bytes are added twice over.
inline __m256i grayOfEight(const std::uint8_t* pixels) {
    const __m256i weights = _mm256_set1_epi32(0x00264b0f);  // 15, 75, 38, 0
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
    const __m256i sums =
        _mm256_madd_epi16(_mm256_maddubs_epi16(bytes, weights), _mm256_set1_epi16(1));
    return _mm256_srli_epi32(sums, 7);
}

void toGray(const std::uint8_t* pixels, int count, std::uint8_t* gray) {
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    int i = 0;
    for (; i + 32 <= count; i += 32, pixels += 128) {
        const __m256i first = _mm256_packs_epi32(grayOfEight(pixels), grayOfEight(pixels + 32));
        const __m256i second =
            _mm256_packs_epi32(grayOfEight(pixels + 64), grayOfEight(pixels + 96));
        // The packing goes by halves of a register, which the permutation puts in order.
        const __m256i packed =
            _mm256_permutevar8x32_epi32(_mm256_packus_epi16(first, second), order);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(gray + i), packed);
    }
    for (; i < count; ++i, pixels += 4) {
        gray[i] =
            static_cast<std::uint8_t>((pixels[0] * 15 + pixels[1] * 75 + pixels[2] * 38) >> 7);
    }
}

constexpr Kernels kKernels{"AVX2", multiply, lstmCell, convolve, toGray};

}  // namespace

const Kernels* const kAvx2Kernels = &kKernels;

}  // namespace tandrel

#else

namespace tandrel {
const Kernels* const kAvx2Kernels = nullptr;
}

#endif
