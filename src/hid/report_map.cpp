#include "hid/report_map.h"

namespace tandrel {

std::optional<ReportID> parseReportID(std::uint8_t raw) {
    for (const ReportID id : kReportIDs) {
        if (static_cast<std::uint8_t>(id) == raw) return id;
    }
    return std::nullopt;
}

std::string_view name(ReportID id) {
    switch (id) {
        case ReportID::keyboard:
            return "keyboard";
        case ReportID::absolutePointer:
            return "absolutePointer";
        case ReportID::relativeMouse:
            return "relativeMouse";
        case ReportID::consumer:
            return "consumer";
    }
    return "";
}

}  // namespace tandrel
