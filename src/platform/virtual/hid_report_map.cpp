#include "platform/virtual/hid_report_map.h"

#include <algorithm>
#include <map>
#include <optional>

#include <fmt/format.h>

namespace tandrel {
namespace {

// An item's prefix without its size (6.2.2.4, 6.2.2.7, 6.2.2.8).
enum Tag : std::uint8_t {
    kInput = 0x80,
    kOutput = 0x90,
    kFeature = 0xB0,
    kCollection = 0xA0,
    kEndCollection = 0xC0,
    kUsagePage = 0x04,
    kLogicalMinimum = 0x14,
    kLogicalMaximum = 0x24,
    kReportSize = 0x74,
    kReportId = 0x84,
    kReportCount = 0x94,
    kPush = 0xA4,
    kPop = 0xB4,
    kUsage = 0x08,
    kUsageMinimum = 0x18,
    kUsageMaximum = 0x28,
};
constexpr std::uint8_t kLongItem = 0xFE;
constexpr std::uint8_t kMainType = 0x00;

struct ShortItem {
    std::uint8_t tag = 0;
    std::size_t size = 0;
    std::uint32_t value = 0;

    std::int32_t signedValue() const {
        if (size == 1) return static_cast<std::int8_t>(value);
        if (size == 2) return static_cast<std::int16_t>(value);
        return static_cast<std::int32_t>(value);
    }
};

struct Globals {
    std::uint32_t usagePage = 0;
    std::int32_t logicalMinimum = 0;
    ShortItem logicalMaximum;  // signed only if the minimum is negative
    std::uint32_t reportSize = 0;
    std::uint32_t reportCount = 0;
    std::uint8_t reportId = 0;
};

class MapReader {
 public:
    explicit MapReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    Result<std::vector<HidField>> read() {
        if (bytes_.size() > HidReportMap::kLongest) return error("the descriptor is too long");
        while (at_ < bytes_.size()) TRY_VOID(readItem());
        if (collections_ != 0) return error("a collection does not end");
        return std::move(inputs_);
    }

 private:
    std::unexpected<Error> error(std::string_view what) const {
        return fail(fmt::format("report map, byte {}: {}", at_, what));
    }

    Result<void> readItem() {
        const std::uint8_t prefix = bytes_[at_];
        if (prefix == kLongItem) return error("long items are not in use");
        const std::size_t size = (prefix & 3) == 3 ? 4 : prefix & 3;
        if (bytes_.size() - at_ - 1 < size) return error("the last item is cut off");
        ShortItem item{.tag = static_cast<std::uint8_t>(prefix & 0xFC), .size = size};
        for (std::size_t i = 0; i < size; ++i) {
            item.value |= static_cast<std::uint32_t>(bytes_[at_ + 1 + i]) << (8 * i);
        }
        TRY_VOID(apply(item));
        if ((item.tag & 0x0C) == kMainType) {
            usages_.clear();
            usageMinimum_.reset();
        }
        at_ += 1 + size;
        return {};
    }

    Result<void> apply(const ShortItem& item) {
        switch (item.tag) {
            case kUsagePage:
                globals_.usagePage = item.value & 0xFFFF;
                return {};
            case kLogicalMinimum:
                globals_.logicalMinimum = item.signedValue();
                return {};
            case kLogicalMaximum:
                globals_.logicalMaximum = item;
                return {};
            case kReportSize:
                globals_.reportSize = item.value;
                return {};
            case kReportCount:
                globals_.reportCount = item.value;
                return {};
            case kReportId:
                return setReportId(item.value);
            case kPush:
                return push();
            case kPop:
                return pop();
            case kUsage:
                return addUsages(usage(item), usage(item));
            case kUsageMinimum:
                usageMinimum_ = usage(item);
                return {};
            case kUsageMaximum:
                return endUsageRange(usage(item));
            case kInput:
                return addInput(item.value);
            case kCollection:
                return openCollection();
            case kEndCollection:
                return closeCollection();
            default:
                return {};  // outputs, features, units, strings: not for an input's decoding
        }
    }

    // A usage of four bytes brings its own page (6.2.2.8).
    std::uint32_t usage(const ShortItem& item) const {
        return item.size == 4 ? item.value : globals_.usagePage << 16 | item.value;
    }

    Result<void> setReportId(std::uint32_t id) {
        if (id == 0 || id > 0xFF) return error("a report id is from 1 to 255");
        globals_.reportId = static_cast<std::uint8_t>(id);
        return {};
    }

    Result<void> push() {
        if (pushed_.size() >= HidReportMap::kMostNested) return error("too many pushed states");
        pushed_.push_back(globals_);
        return {};
    }

    Result<void> pop() {
        if (pushed_.empty()) return error("pop without push");
        globals_ = pushed_.back();
        pushed_.pop_back();
        return {};
    }

    Result<void> openCollection() {
        if (++collections_ > HidReportMap::kMostNested) return error("collections nest too deeply");
        return {};
    }

    Result<void> closeCollection() {
        if (collections_ == 0) return error("a collection ends that did not begin");
        --collections_;
        return {};
    }

    Result<void> addUsages(std::uint32_t first, std::uint32_t last) {
        if (last < first) return error("a usage range ends before it begins");
        if (last - first >=
            HidReportMap::kMostUsages - std::min(usages_.size(), HidReportMap::kMostUsages)) {
            return error("too many usages");
        }
        for (std::uint32_t i = 0; i <= last - first; ++i) usages_.push_back(first + i);
        return {};
    }

    Result<void> endUsageRange(std::uint32_t last) {
        if (!usageMinimum_) return error("a usage maximum without a minimum");
        TRY_VOID(addUsages(*usageMinimum_, last));
        usageMinimum_.reset();
        return {};
    }

    Result<void> addInput(std::uint32_t flags) {
        const auto size = globals_.reportSize;
        const auto count = globals_.reportCount;
        if (size == 0 || size > 32 || count == 0) return error("a field has no size");
        int& bits = reportBits_[globals_.reportId];
        if (count > static_cast<std::uint32_t>(HidReportMap::kMostReportBits - bits) / size) {
            return error("a report is too long");
        }
        const auto& maximum = globals_.logicalMaximum;
        inputs_.push_back({.reportId = globals_.reportId,
                           .bitOffset = bits,
                           .bitSize = static_cast<int>(size),
                           .count = static_cast<int>(count),
                           .constant = (flags & 1) != 0,
                           .variable = (flags & 2) != 0,
                           .relative = (flags & 4) != 0,
                           .logicalMinimum = globals_.logicalMinimum,
                           .logicalMaximum = globals_.logicalMinimum < 0
                                                 ? maximum.signedValue()
                                                 : static_cast<std::int32_t>(maximum.value),
                           .usages = usages_});
        bits += static_cast<int>(size * count);
        return {};
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
    Globals globals_;
    std::vector<Globals> pushed_;
    std::size_t collections_ = 0;
    std::vector<std::uint32_t> usages_;
    std::optional<std::uint32_t> usageMinimum_;
    std::map<std::uint8_t, int> reportBits_;
    std::vector<HidField> inputs_;
};

// Little-endian bits, sign-extended if the field can be negative.
std::int32_t fieldValue(std::span<const std::uint8_t> report, int bitOffset,
                        const HidField& field) {
    std::uint32_t raw = 0;
    for (int i = 0; i < field.bitSize; ++i) {
        const auto bit = static_cast<std::size_t>(bitOffset + i);
        raw |= static_cast<std::uint32_t>((report[bit / 8] >> (bit % 8)) & 1) << i;
    }
    const bool negative = field.logicalMinimum < 0 && ((raw >> (field.bitSize - 1)) & 1) != 0;
    if (negative && field.bitSize < 32) raw |= ~0U << field.bitSize;
    return static_cast<std::int32_t>(raw);
}

// The value as its usage has it; none for a null value and for a field without a usage.
std::optional<HidValue> interpret(const HidField& field, int index, std::int32_t value) {
    if (value < field.logicalMinimum || value > field.logicalMaximum) return std::nullopt;
    if (field.usages.empty()) return std::nullopt;
    if (field.variable) {
        const auto last = field.usages.size() - 1;  // stands for all further fields, too (6.2.2.8)
        return HidValue{.usage = field.usages[std::min(static_cast<std::size_t>(index), last)],
                        .value = value,
                        .minimum = field.logicalMinimum,
                        .maximum = field.logicalMaximum,
                        .relative = field.relative};
    }
    const auto chosen = static_cast<std::int64_t>(value) - field.logicalMinimum;
    if (chosen >= static_cast<std::int64_t>(field.usages.size())) return std::nullopt;
    const std::uint32_t usage = field.usages[static_cast<std::size_t>(chosen)];
    if ((usage & 0xFFFF) == 0) return std::nullopt;
    return HidValue{.usage = usage, .value = 1, .minimum = 0, .maximum = 1, .relative = false};
}

}  // namespace

Result<HidReportMap> HidReportMap::parse(std::span<const std::uint8_t> descriptor) {
    HidReportMap map;
    map.inputs_ = TRY(MapReader(descriptor).read());
    return map;
}

std::size_t HidReportMap::reportBytes(std::uint8_t reportId) const {
    int bits = 0;
    for (const HidField& field : inputs_) {
        if (field.reportId == reportId) {
            bits = std::max(bits, field.bitOffset + field.bitSize * field.count);
        }
    }
    return static_cast<std::size_t>(bits + 7) / 8;
}

std::vector<HidValue> HidReportMap::decode(std::uint8_t reportId,
                                           std::span<const std::uint8_t> report) const {
    std::vector<HidValue> values;
    if (report.size() < reportBytes(reportId)) return values;
    for (const HidField& field : inputs_) {
        if (field.reportId != reportId || field.constant) continue;
        for (int i = 0; i < field.count; ++i) {
            const auto value = fieldValue(report, field.bitOffset + i * field.bitSize, field);
            if (const auto known = interpret(field, i, value)) values.push_back(*known);
        }
    }
    return values;
}

}  // namespace tandrel
