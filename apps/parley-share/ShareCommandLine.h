#pragma once

#include <optional>
#include <string>
#include <vector>

// The command line of parley-share:
//   parley-share [--bundle PATH] [--gather] [--press TARGET] [--focus TARGET]
//                [--snapshot PATH.png [--scale S]]
//                [--action TARGET | --describe] (--url URL | parley-share:LINK | FILE...)
//   parley-share --help
// TARGET is send, fav or cancel. A FILE is a path or a file:// URI, as desktops pass them
// (%F and %U), read by platform::PathText::pathOfFileURI; parley-share:LINK carries a
// percent-encoded link, as the browser passes it. Parsing only checks the form; files need not
// exist (the extension copes with missing ones).
class ShareCommandLine {
  public:
    enum class Action { None, SendToFriend, FavToParley, Cancel };

    // |arguments| excludes the program name.
    static ShareCommandLine parse(const std::vector<std::string>& arguments);
    static std::string usage();
    // The largest --scale accepted: a 376 x 370 sheet at 8x is already 24 MB of pixels.
    static constexpr double kMaxScale = 8.0;

    // False when the arguments are unusable; error() then says why.
    bool isValid() const { return error_.empty(); }
    const std::string& error() const { return error_; }

    bool help() const { return help_; }
    // Clicked (mouse-down and mouse-up) once the sheet is loaded; None waits for the person.
    Action action() const { return action_; }
    // Pressed (mouse-down only) before the snapshot and the action.
    Action press() const { return press_; }
    // Given the keyboard focus (by Tab, as a person would) before the snapshot and the action.
    Action focus() const { return focus_; }
    // Where to write the sheet as shown, as PNG, and at how many pixels per point.
    const std::optional<std::string>& snapshotPath() const { return snapshotPath_; }
    double scale() const { return scale_; }
    // Print the description of every window and its view tree, then stop without an action.
    bool describe() const { return describe_; }
    const std::optional<std::string>& url() const { return url_; }
    // Paths, file URIs (operands or after --url) already turned into paths.
    const std::vector<std::string>& files() const { return files_; }
    // Waiting for the person, the files join those of parley-share processes started with them.
    bool gather() const { return gather_; }
    // The extension bundle to run as, instead of the one holding the executable.
    const std::optional<std::string>& bundlePath() const { return bundlePath_; }

  private:
    bool help_ = false;
    Action action_ = Action::None;
    Action press_ = Action::None;
    Action focus_ = Action::None;
    std::optional<std::string> snapshotPath_;
    double scale_ = 1.0;
    bool describe_ = false;
    bool gather_ = false;
    std::optional<std::string> url_;
    std::vector<std::string> files_;
    std::optional<std::string> bundlePath_;
    std::string error_;
};
