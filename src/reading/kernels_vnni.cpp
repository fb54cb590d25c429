// Compiled for AVX-512 with VNNI, whose dot product takes unsigned times signed bytes: inputs are
// moved up by 128 and the matrix's offsets take off what that adds. As in the file for AVX2, no
// inline function of another file is called.
#include "reading/kernels.h"

#if defined(__AVX512VNNI__) && defined(__AVX512BW__) && defined(__AVX512VL__)

#include <immintrin.h>

namespace tandrel {

namespace {

constexpr int kGroup = PackedMatrix::kGroup;
constexpr int kQuad = PackedMatrix::kQuad;
constexpr int kGroupBytes = kGroup * kQuad;
constexpr int kRowsAtOnce = 8;

inline __m512 curve(__m512 x) {
    const __m512 limit = _mm512_set1_ps(4.9f), lower = _mm512_set1_ps(-4.9f);
    x = _mm512_max_ps(_mm512_min_ps(x, limit), lower);
    const __m512 y = _mm512_mul_ps(x, x);
    __m512 above = _mm512_add_ps(_mm512_set1_ps(378.f), y);
    above = _mm512_fmadd_ps(y, above, _mm512_set1_ps(17325.f));
    above = _mm512_mul_ps(x, _mm512_fmadd_ps(y, above, _mm512_set1_ps(135135.f)));
    __m512 below = _mm512_fmadd_ps(y, _mm512_set1_ps(28.f), _mm512_set1_ps(3150.f));
    below = _mm512_fmadd_ps(y, below, _mm512_set1_ps(62370.f));
    below = _mm512_fmadd_ps(y, below, _mm512_set1_ps(135135.f));
    const __m512 rough = _mm512_rcp14_ps(below);
    const __m512 error = _mm512_fnmadd_ps(below, rough, _mm512_set1_ps(2.f));
    return _mm512_mul_ps(above, _mm512_mul_ps(rough, error));
}

inline __m512 sigmoid(__m512 x) {
    const __m512 half = _mm512_set1_ps(0.5f);
    return _mm512_fmadd_ps(half, curve(_mm512_mul_ps(half, x)), half);
}

inline void storeQuantised(__m512 x, std::int8_t* to) {
    const __m512i whole = _mm512_cvtps_epi32(_mm512_mul_ps(x, _mm512_set1_ps(127.f)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm512_cvtepi32_epi8(whole));
}

inline __m512 scaled(__m512i sums, const PackedMatrix& matrix, int at) {
    return _mm512_fmadd_ps(_mm512_cvtepi32_ps(sums), _mm512_loadu_ps(matrix.scales() + at),
                           _mm512_loadu_ps(matrix.biases() + at));
}

inline __m512i negativeOffsets(const PackedMatrix& matrix, int at) {
    return _mm512_sub_epi32(_mm512_setzero_si512(), _mm512_loadu_si512(matrix.offsets() + at));
}

inline __m512i fourInputs(const void* inputs) {
    int quad;
    __builtin_memcpy(&quad, inputs, sizeof quad);
    return _mm512_set1_epi32(quad);
}

template <int kRows, int kGroups>
inline void multiplyBlock(const PackedMatrix& matrix, int group,
                          const std::uint8_t (*inputs)[PackedMatrix::kMostInputs], float* out) {
    const std::int8_t* weights[kGroups];
    __m512i sums[kRows][kGroups];
    for (int g = 0; g < kGroups; ++g) {
        weights[g] = matrix.group(group + g);
        const __m512i offsets = negativeOffsets(matrix, (group + g) * kGroup);
        for (int r = 0; r < kRows; ++r) sums[r][g] = offsets;
    }
    const int quads = matrix.quads();
    for (int q = 0; q < quads; ++q) {
        __m512i loaded[kGroups];
        for (int g = 0; g < kGroups; ++g) {
            loaded[g] = _mm512_loadu_si512(weights[g] + q * kGroupBytes);
        }
        for (int r = 0; r < kRows; ++r) {
            const __m512i quad = fourInputs(&inputs[r][q * kQuad]);
            for (int g = 0; g < kGroups; ++g) {
                sums[r][g] = _mm512_dpbusd_epi32(sums[r][g], quad, loaded[g]);
            }
        }
    }
    for (int r = 0; r < kRows; ++r) {
        for (int g = 0; g < kGroups; ++g) {
            const int at = (group + g) * kGroup;
            _mm512_storeu_ps(out + static_cast<std::ptrdiff_t>(r) * matrix.paddedOutputs() + at,
                             scaled(sums[r][g], matrix, at));
        }
    }
}

template <int kRows>
void multiplyRows(const PackedMatrix& matrix, const std::int8_t* rows, int rowBytes, float* out) {
    alignas(64) std::uint8_t inputs[kRows][PackedMatrix::kMostInputs];
    const __m128i sign = _mm_set1_epi8(-128);
    for (int r = 0; r < kRows; ++r) {
        for (int k = 0; k < matrix.inputs(); k += kGroup) {
            const auto* from = reinterpret_cast<const __m128i*>(
                rows + static_cast<std::ptrdiff_t>(r) * rowBytes + k);
            _mm_store_si128(reinterpret_cast<__m128i*>(&inputs[r][k]),
                            _mm_xor_si128(_mm_loadu_si128(from), sign));
        }
    }
    int group = 0;
    for (; group + 2 <= matrix.groups(); group += 2) {
        multiplyBlock<kRows, 2>(matrix, group, inputs, out);
    }
    if (group < matrix.groups()) multiplyBlock<kRows, 1>(matrix, group, inputs, out);
}

void multiply(const PackedMatrix& matrix, const std::int8_t* rows, int rowBytes, int count,
              float* out) {
    int row = 0;
    const auto input = [&] { return rows + static_cast<std::ptrdiff_t>(row) * rowBytes; };
    const auto output = [&] {
        return out + static_cast<std::ptrdiff_t>(row) * matrix.paddedOutputs();
    };
    for (; count - row >= kRowsAtOnce; row += kRowsAtOnce) {
        multiplyRows<kRowsAtOnce>(matrix, input(), rowBytes, output());
    }
    for (; count - row >= 4; row += 4) multiplyRows<4>(matrix, input(), rowBytes, output());
    for (; count - row >= 2; row += 2) multiplyRows<2>(matrix, input(), rowBytes, output());
    if (count > row) multiplyRows<1>(matrix, input(), rowBytes, output());
}

void lstmCell(const float* gates, int size, float* state, std::int8_t* output) {
    const __m512 limit = _mm512_set1_ps(100.f), lower = _mm512_set1_ps(-100.f);
    for (int i = 0; i < size; i += kGroup) {
        const __m512 candidate = curve(_mm512_loadu_ps(gates + i));
        const __m512 in = sigmoid(_mm512_loadu_ps(gates + size + i));
        const __m512 forget = sigmoid(_mm512_loadu_ps(gates + 2 * size + i));
        const __m512 outGate = sigmoid(_mm512_loadu_ps(gates + 3 * size + i));
        const __m512 kept = _mm512_mul_ps(_mm512_loadu_ps(state + i), forget);
        const __m512 sum = _mm512_fmadd_ps(candidate, in, kept);
        const __m512 next = _mm512_max_ps(_mm512_min_ps(sum, limit), lower);
        _mm512_storeu_ps(state + i, next);
        storeQuantised(_mm512_mul_ps(curve(next), outGate), output + i);
    }
}

void convolve(const PackedMatrix& matrix, const std::int8_t* image, int steps,
              std::int8_t* output) {
    constexpr int kPool = Kernels::kPool, kColumn = Kernels::kColumnBytes;
    __m512i weights[3];
    for (int q = 0; q < 3; ++q) weights[q] = _mm512_loadu_si512(matrix.group(0) + q * kGroupBytes);
    const __m512i offsets = negativeOffsets(matrix, 0);
    const __m512i sign = _mm512_set1_epi8(-128);
    for (int step = 0; step < steps; ++step) {
        for (int y = 0; y < Kernels::kPooledRows; ++y, output += kGroup) {
            __m512i most = _mm512_set1_epi32(INT32_MIN);
            for (int dy = 0; dy < kPool; ++dy) {
                __m512i columns[kPool + 2];
                for (int c = 0; c < kPool + 2; ++c) {
                    const int at = (step * kPool + c) * kColumn + y * kPool + dy;
                    columns[c] = _mm512_xor_si512(fourInputs(image + at), sign);
                }
                for (int dx = 0; dx < kPool; ++dx) {
                    __m512i sums = _mm512_dpbusd_epi32(offsets, columns[dx], weights[0]);
                    sums = _mm512_dpbusd_epi32(sums, columns[dx + 1], weights[1]);
                    sums = _mm512_dpbusd_epi32(sums, columns[dx + 2], weights[2]);
                    most = _mm512_max_epi32(most, sums);
                }
            }
            storeQuantised(curve(scaled(most, matrix, 0)), output);
        }
    }
}

// What AVX2 does as well as AVX-512 is not written twice.
void toGray(const std::uint8_t* pixels, int count, std::uint8_t* gray) {
    kAvx2Kernels->toGray(pixels, count, gray);
}

constexpr Kernels kKernels{"AVX-512 VNNI", multiply, lstmCell, convolve, toGray};

}  // namespace

const Kernels* const kVnniKernels = &kKernels;

}  // namespace tandrel

#else

namespace tandrel {
const Kernels* const kVnniKernels = nullptr;
}

#endif
