#include "apps/parley-share/ShareCommandLine.h"

#include <cmath>
#include <cstdlib>

#include "platform/core/Url.h"

namespace {

// Splits "--name=value"; a bare "--name" leaves |value| empty and returns false.
bool splitInlineValue(const std::string& argument, std::string* name, std::string* value) {
    const size_t equals = argument.find('=');
    if (argument.rfind("--", 0) != 0 || equals == std::string::npos) {
        *name = argument;
        return false;
    }
    *name = argument.substr(0, equals);
    *value = argument.substr(equals + 1);
    return true;
}

std::optional<ShareCommandLine::Action> targetNamed(const std::string& name) {
    if (name == "send")
        return ShareCommandLine::Action::SendToFriend;
    if (name == "fav")
        return ShareCommandLine::Action::FavToParley;
    if (name == "cancel")
        return ShareCommandLine::Action::Cancel;
    return std::nullopt;
}

}  // namespace

std::string ShareCommandLine::usage() {
    return "Usage: parley-share [OPTIONS] (--url URL | FILE...)\n"
           "       parley-share --help\n"
           "\n"
           "Shares one link or one or more files with Parley, the way the Share menu would:\n"
           "shows the share sheet and waits for a click on a row or on Cancel. Without a\n"
           "display, give --action, --snapshot or --describe.\n"
           "\n"
           "  --url URL          share a web link (an absolute URL with a scheme)\n"
           "  FILE...            share files or folders (use -- before names starting with -)\n"
           "  --action TARGET    click TARGET instead of waiting for the person:\n"
           "                       send    the send-to-friend row\n"
           "                       fav     the add-to-favourites row\n"
           "                       cancel  the Cancel button (nothing is handed over)\n"
           "  --press TARGET     press the mouse on TARGET (without releasing it) first\n"
           "  --snapshot PATH    write the sheet as shown, after --press, as a PNG picture\n"
           "  --scale S          pixels per point of the snapshot (default 1, at most 8)\n"
           "  --describe         print the sheet's window and view tree, after --press and\n"
           "                     --snapshot, and stop without handing anything over\n"
           "  --bundle PATH      run as the extension bundle at PATH instead of the one\n"
           "                     that holds this executable\n"
           "  --help             show this text\n"
           "\n"
           "Exit status: 0 when the request completed (or, with only --snapshot or\n"
           "--describe, when the picture was written or the tree printed), 2 when it was\n"
           "cancelled, 1 when it failed, 64 on bad arguments, 73 when the snapshot could not\n"
           "be written, 78 when the extension bundle has no identifier.\n";
}

ShareCommandLine ShareCommandLine::parse(const std::vector<std::string>& arguments) {
    ShareCommandLine line;
    auto fail = [&line](const std::string& message) {
        if (line.error_.empty())
            line.error_ = message;
    };

    bool optionsEnded = false;
    bool scaleGiven = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (optionsEnded || argument.empty() || argument[0] != '-' || argument == "-") {
            line.files_.push_back(argument);
            continue;
        }
        if (argument == "--") {
            optionsEnded = true;
            continue;
        }
        std::string name;
        std::string value;
        const bool hasInlineValue = splitInlineValue(argument, &name, &value);
        auto takeValue = [&]() -> std::optional<std::string> {
            if (hasInlineValue)
                return value;
            if (i + 1 < arguments.size())
                return arguments[++i];
            fail("option " + name + " needs a value");
            return std::nullopt;
        };

        if (name == "--help" || name == "-h") {
            line.help_ = true;
        } else if (name == "--action" || name == "--press") {
            const std::optional<std::string> value = takeValue();
            if (!value)
                continue;
            Action& target = name == "--action" ? line.action_ : line.press_;
            if (target != Action::None)
                fail(name + " given twice");
            if (const std::optional<Action> named = targetNamed(*value))
                target = *named;
            else
                fail("unknown target \"" + *value + "\" for " + name + " (send, fav or cancel)");
        } else if (name == "--snapshot") {
            const std::optional<std::string> path = takeValue();
            if (!path)
                continue;
            if (path->empty())
                fail("--snapshot needs a file name");
            line.snapshotPath_ = *path;
        } else if (name == "--scale") {
            const std::optional<std::string> value = takeValue();
            if (!value)
                continue;
            char* end = nullptr;
            const double scale = std::strtod(value->c_str(), &end);
            if (value->empty() || *end != '\0' || !std::isfinite(scale) || scale <= 0 ||
                scale > kMaxScale)
                fail("--scale takes a number above 0 and at most 8, not \"" + *value + "\"");
            line.scale_ = scale;
            scaleGiven = true;
        } else if (name == "--describe") {
            line.describe_ = true;
        } else if (name == "--url") {
            const std::optional<std::string> url = takeValue();
            if (!url)
                continue;
            if (line.url_)
                fail("--url given twice");
            if (!platform::Url::URLWithString(*url))
                fail("not an absolute URL: \"" + *url + "\"");
            line.url_ = *url;
        } else if (name == "--bundle") {
            const std::optional<std::string> path = takeValue();
            if (path)
                line.bundlePath_ = *path;
        } else {
            fail("unknown option " + name);
        }
    }

    if (line.help_) {
        line.error_.clear();
        return line;
    }
    if (line.url_ && !line.files_.empty())
        fail("share either --url or files, not both");
    if (!line.url_ && line.files_.empty())
        fail("nothing to share: give --url URL or files");
    if (line.describe_ && line.action_ != Action::None)
        fail("--describe hands nothing over; leave out --action");
    if (scaleGiven && !line.snapshotPath_)
        fail("--scale applies only to --snapshot");
    return line;
}
