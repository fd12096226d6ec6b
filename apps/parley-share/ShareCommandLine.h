#pragma once

#include <optional>
#include <string>
#include <vector>

// The command line of parley-share:
//   parley-share [--bundle PATH] --action send|fav|cancel (--url URL | FILE...)
//   parley-share --help
// Parsing only checks the form; files need not exist (the extension copes with missing ones).
class ShareCommandLine {
  public:
    enum class Action { None, SendToFriend, FavToParley, Cancel };

    // |arguments| excludes the program name.
    static ShareCommandLine parse(const std::vector<std::string>& arguments);
    static std::string usage();

    // False when the arguments are unusable; error() then says why.
    bool isValid() const { return error_.empty(); }
    const std::string& error() const { return error_; }

    bool help() const { return help_; }
    Action action() const { return action_; }
    const std::optional<std::string>& url() const { return url_; }
    const std::vector<std::string>& files() const { return files_; }
    // The extension bundle to run as, instead of the one holding the executable.
    const std::optional<std::string>& bundlePath() const { return bundlePath_; }

  private:
    bool help_ = false;
    Action action_ = Action::None;
    std::optional<std::string> url_;
    std::vector<std::string> files_;
    std::optional<std::string> bundlePath_;
    std::string error_;
};
