#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

#include "base/app_info.h"
#include "platform/extended_attributes.h"
#include "platform/processes.h"
#include "platform/user_defaults.h"

namespace tandrel {

// Whether the AI apps can start the helper that lies beside this program. A downloaded copy may be
// held back by the system until the owner allows it. Collaborators outlive it. Any thread.
class HelperCheck {
 public:
    struct State {
        enum class Kind { failed, ready, needsApproval, blocked, missing };
        Kind kind = Kind::ready;
        std::string text;  // why it failed

        bool operator==(const State&) const = default;
    };
    struct Services {
        Processes& processes;
        UserDefaults& defaults;
        ExtendedAttributes& attributes;
    };

    static constexpr Duration kTimeout = std::chrono::seconds(8);
    // The page of the system's settings where a program that is held back is allowed.
    static constexpr const char* privacySettingsURL =
        "x-apple.systempreferences:com.apple.preference.security?General";

    HelperCheck(AppInfo info, Services services) : info_(std::move(info)), to_(services) {}

    std::filesystem::path path() const { return info_.bundle / "bin/tandrel"; }
    // Told without running anything.
    State state() const;
    // Runs the helper with "--version" and remembers a right answer for `state`. Blocks.
    State run(Duration timeout = kTimeout, std::stop_token stop = {}) const;

    static std::optional<std::uint64_t> parseFlags(std::string_view text);
    std::optional<std::uint64_t> quarantineFlags(const std::filesystem::path& file) const;
    static bool needsApproval(std::optional<std::uint64_t> bundleFlags);

 private:
    std::string marker() const { return info_.version + "|" + info_.bundle.string(); }

    const AppInfo info_;
    const Services to_;
};

// One line, such as `ready` or `failed("exit 1")`.
std::string describe(const HelperCheck::State& state);

}  // namespace tandrel
