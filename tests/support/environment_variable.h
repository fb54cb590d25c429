#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#include "base/environment.h"

namespace tandrel {

// A variable that has this value, or none, for a while and then its former one again. The test has
// no other thread that reads the environment at these moments.
class EnvironmentVariable {
 public:
    EnvironmentVariable(const char* name, const std::optional<std::string>& value)
        : name_(name), before_(environment(name)) {
        set(value);
    }
    ~EnvironmentVariable() { set(before_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
    void set(const std::optional<std::string>& value) const {
        if (value) {
            ::setenv(name_, value->c_str(), 1);
        } else {
            ::unsetenv(name_);
        }
    }

    const char* const name_;
    const std::optional<std::string> before_;
};

}  // namespace tandrel
