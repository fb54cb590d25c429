#include "image/png_writer.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include "image/png_filter.h"

// PNG (W3C Recommendation, second edition): a signature and three chunks, the picture as one zlib
// stream of filtered scanlines.
namespace tandrel {
namespace {

constexpr int kLevel = 1;
// How much is compressed with one set of Huffman codes: less follows a screen's mix of text and
// photo better and comes out smaller, more spends less time on making codes.
constexpr std::uint32_t kLevelMemory = ISAL_DEF_LVL1_MEDIUM;
constexpr std::size_t kLargestFile = 0x7fffffff;  // a chunk's length has 31 bits
// Rows are filtered and compressed in bands of about this many bytes: they stay in the cache, and
// the C library serves blocks of this size without asking the system for fresh pages each time.
constexpr std::size_t kBandBytes = 96 * 1024;

void append32(Bytes& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

// Begins a chunk; the length is filled in by endChunk.
std::size_t beginChunk(Bytes& out, std::string_view type) {
    const std::size_t start = out.size();
    append32(out, 0);
    out.insert(out.end(), type.begin(), type.end());
    return start;
}

void endChunk(Bytes& out, std::size_t start) {
    const std::size_t typed = out.size() - start - 4;  // type and data
    for (int i = 0; i < 4; ++i) {
        out[start + static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>((typed - 4) >> (24 - 8 * i));
    }
    append32(out, crc32_gzip_refl(0, out.data() + start + 4, typed));
}

void appendHeader(Bytes& out, const Pixels& pixels) {
    constexpr std::array<std::uint8_t, 8> kSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    // bits a channel, colour type RGB, compression, filter method, no interlace
    constexpr std::array<std::uint8_t, 5> kLayout{8, 2, 0, 0, 0};
    out.insert(out.end(), kSignature.begin(), kSignature.end());
    const std::size_t chunk = beginChunk(out, "IHDR");
    append32(out, static_cast<std::uint32_t>(pixels.w));
    append32(out, static_cast<std::uint32_t>(pixels.h));
    out.insert(out.end(), kLayout.begin(), kLayout.end());
    endChunk(out, chunk);
}

// One zlib stream appended to `out`.
class ZlibStream {
 public:
    explicit ZlibStream(Bytes& out) : out_(out) {
        isal_deflate_init(&stream_);
        stream_.level = kLevel;
        stream_.level_buf = memory_.get();
        stream_.level_buf_size = kLevelMemory;
        stream_.gzip_flag = IGZIP_ZLIB;
    }

    enum class Part { more, last };

    // False when the compressor refuses.
    bool add(std::uint8_t* data, std::size_t size, Part part) {
        stream_.next_in = data;
        stream_.avail_in = static_cast<std::uint32_t>(size);
        stream_.end_of_stream = part == Part::last;
        do {
            stream_.next_out = compressed_.get();
            stream_.avail_out = kBandBytes;
            if (isal_deflate(&stream_) != COMP_OK) return false;
            out_.insert(out_.end(), compressed_.get(), stream_.next_out);
        } while (stream_.avail_in > 0 || stream_.avail_out == 0);
        return true;
    }

 private:
    Bytes& out_;
    isal_zstream stream_;
    const std::unique_ptr<std::uint8_t[]> memory_{new std::uint8_t[kLevelMemory]};
    const std::unique_ptr<std::uint8_t[]> compressed_{new std::uint8_t[kBandBytes]};
};

bool appendPicture(Bytes& out, const Pixels& pixels) {
    RowFilter filter(pixels.w);
    const std::size_t line = filter.lineBytes();
    const int rowsPerBand = static_cast<int>(std::max<std::size_t>(1, kBandBytes / line));
    Bytes band(line * static_cast<std::size_t>(rowsPerBand) + RowFilter::kOverrun);
    ZlibStream zlib(out);
    for (int top = 0; top < pixels.h; top += rowsPerBand) {
        const int rows = std::min(rowsPerBand, pixels.h - top);
        for (int i = 0; i < rows; ++i) {
            const int y = top + i;
            filter.write(band.data() + line * static_cast<std::size_t>(i), pixels.row(y),
                         y == 0 ? nullptr : pixels.row(y - 1));
        }
        const auto part = top + rows == pixels.h ? ZlibStream::Part::last : ZlibStream::Part::more;
        if (!zlib.add(band.data(), line * static_cast<std::size_t>(rows), part)) return false;
    }
    return true;
}

}  // namespace

std::optional<Bytes> encodePng(const Pixels& pixels) {
    if (pixels.w < 1 || pixels.h < 1) return std::nullopt;
    Bytes out;
    // About what a screen comes to, so that the file is not moved while it grows.
    out.reserve(static_cast<std::size_t>(pixels.w) * static_cast<std::size_t>(pixels.h) / 2);
    appendHeader(out, pixels);
    const std::size_t picture = beginChunk(out, "IDAT");
    if (!appendPicture(out, pixels) || out.size() > kLargestFile) return std::nullopt;
    endChunk(out, picture);
    endChunk(out, beginChunk(out, "IEND"));
    return out;
}

}  // namespace tandrel
