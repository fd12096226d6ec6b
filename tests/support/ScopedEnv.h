#pragma once

#include <cstdlib>
#include <optional>
#include <string>

// Sets (or unsets, with nullopt) an environment variable for one scope, restoring it after.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        set(value);
    }
    ~ScopedEnv() { set(old_); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

  private:
    void set(const std::optional<std::string>& value) const {
        value ? setenv(name_.c_str(), value->c_str(), 1) : unsetenv(name_.c_str());
    }
    std::string name_;
    std::optional<std::string> old_;
};
