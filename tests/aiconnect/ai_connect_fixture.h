#pragma once

#include <algorithm>
#include <fstream>
#include <vector>

#include <gtest/gtest.h>

#include "aiconnect/ai_connect.h"
#include "base/file.h"
#include "platform/linux/child_processes.h"
#include "support/manual_clock.h"
#include "support/temporary_folder.h"

namespace tandrel {

// Claude Desktop as the system sees it.
class FakeDesktop final : public RunningApplications, public InstalledApplications {
 public:
    std::vector<RunningApplication> others() override {
        std::vector<RunningApplication> result{{7, "Editor", "org.example.editor"}};
        for (int i = 0; i < instances; ++i) {
            result.push_back({10 + i, "Claude", "com.anthropic.claudefordesktop"});
        }
        return result;
    }
    bool terminate(const RunningApplication& application) override {
        asked.push_back(application.pid);
        if (quits) --instances;
        return true;
    }
    bool forceTerminate(const RunningApplication&) override { return false; }
    std::optional<InstalledApplication> find(std::string_view identifier) override {
        if (identifier != installed) return std::nullopt;
        return InstalledApplication{"/usr/share/applications/x.desktop"};
    }
    Result<void> open(const InstalledApplication& application) override {
        opened.push_back(application.location);
        return {};
    }

    int instances = 0;
    bool quits = true;
    std::string installed;
    std::vector<int> asked;
    std::vector<std::filesystem::path> opened;
};

// AI apps in a home folder of their own.
class AIConnectTest : public testing::Test {
 protected:
    using Outcome = AIConnect::Outcome;

    AIConnectTest() { places.system.clear(); }

    AIConnect connect() { return {kHelper, places, {processes, desktop, desktop, clock}}; }

    static void put(const std::filesystem::path& file, const std::string& text) {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    std::filesystem::path putProgram(const std::string& name, const std::string& script) const {
        const auto program = home() / name;
        put(program, "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return program;
    }
    static std::string textOf(const std::filesystem::path& file) {
        const auto text = readFile(file, 10'000'000);
        return text ? *text : "none: " + text.error().message;
    }
    static std::vector<std::string> namesIn(const std::filesystem::path& folder) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            names.push_back(entry.path().filename());
        }
        std::ranges::sort(names);
        return names;
    }

    const std::filesystem::path& home() const { return folder_.path(); }
    std::filesystem::path codexFile() const { return home() / ".codex/config.toml"; }
    std::filesystem::path desktopFile() const {
        return home() / ".config/Claude/claude_desktop_config.json";
    }
    // The backup that an edit leaves beside a file.
    static std::filesystem::path backupOf(const std::filesystem::path& file) {
        return file.string() + ".backup-2025-12-18T00-00-00Z";
    }

    static constexpr const char* kHelper = "/opt/Tandrel/bin/tandrel";
    static constexpr const char* kEntry =
        "[mcp_servers.tandrel]\ncommand = \"/opt/Tandrel/bin/tandrel\"\nargs = [\"mcp\"]\n";

 private:
    TemporaryFolder folder_;

 protected:
    AIConnectPlaces places = AIConnectPlaces::below(folder_.path());
    FakeDesktop desktop;
    ChildProcesses processes;
    ManualClock clock{ManualClock::Sleep::passes};  // it is 2025-12-18, midnight UTC
};

}  // namespace tandrel
