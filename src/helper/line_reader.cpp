#include "helper/line_reader.h"

namespace tandrel {

void LineReader::append(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        take(bytes.substr(0, end));
        if (end == std::string_view::npos) return;
        endLine();
        bytes.remove_prefix(end + 1);
    }
}

void LineReader::finish() { endLine(); }

void LineReader::take(std::string_view part) {
    if (skipping_) return;
    if (part.size() > longest_ - line_.size()) {
        skipping_ = true;
        line_ = {};
        receiver_(Kind::tooLong, {});
        return;
    }
    line_ += part;
}

void LineReader::endLine() {
    std::string_view line = line_;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.find_first_not_of(" \t") != std::string_view::npos) receiver_(Kind::whole, line);
    line_.clear();
    skipping_ = false;
}

}  // namespace tandrel
