#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/result.h"

// Report descriptors read as a host reads them: Device Class Definition for HID 1.11,
// section 6.2.2.
namespace tandrel {

// A run of equal fields of an input report.
struct HidField {
    std::uint8_t reportId = 0;
    int bitOffset = 0;  // from the report's start, without a report id byte
    int bitSize = 0;    // of one field
    int count = 0;
    bool constant = false;  // padding
    bool variable = false;  // one usage a field; otherwise the field's value names the usage
    bool relative = false;
    std::int32_t logicalMinimum = 0;
    std::int32_t logicalMaximum = 0;
    std::vector<std::uint32_t> usages;  // page << 16 | usage; for a range, all of it
};

// One field's value, as it arrived.
struct HidValue {
    std::uint32_t usage = 0;  // page << 16 | usage
    std::int32_t value = 0;   // an array field that names its usage: 1
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
    bool relative = false;

    bool operator==(const HidValue&) const = default;
};

class HidReportMap {
 public:
    // Bounds for descriptors from outside.
    static constexpr std::size_t kLongest = 4096;  // bytes
    static constexpr int kMostReportBits = 8 * 64;
    static constexpr std::size_t kMostUsages = 1024;  // of one main item
    static constexpr std::size_t kMostNested = 16;    // collections, or pushed states

    // Fails with what is wrong and at which byte.
    static Result<HidReportMap> parse(std::span<const std::uint8_t> descriptor);

    // The length of an input report in bytes; 0 for an id that the map does not have.
    std::size_t reportBytes(std::uint8_t reportId) const;
    // The values of an input report; none when it is shorter than the map says or its id is
    // unknown. Values outside their logical range are null values and are left out (6.2.2.5), and
    // so are array fields that name no usage.
    std::vector<HidValue> decode(std::uint8_t reportId, std::span<const std::uint8_t> report) const;

    const std::vector<HidField>& inputs() const { return inputs_; }

 private:
    std::vector<HidField> inputs_;
};

}  // namespace tandrel
