#pragma once

// What the owner has allowed this program.
namespace tandrel {

enum class Permission { notDetermined, denied, granted };

class Permissions {
 public:
    virtual ~Permissions() = default;
    // None of these asks the owner anything. Any thread.
    virtual Permission bluetooth() = 0;
    virtual Permission camera() = 0;
    virtual Permission screenRecording() = 0;
};

}  // namespace tandrel
