#include "apps/parley-share/ShareCommandLine.h"

#include "platform/Url.h"

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

}  // namespace

std::string ShareCommandLine::usage() {
    return "Usage: parley-share [--bundle PATH] --action send|fav|cancel (--url URL | FILE...)\n"
           "       parley-share --help\n"
           "\n"
           "Shares one link or one or more files with Parley, the way the Share menu would.\n"
           "\n"
           "  --action send     send to a friend\n"
           "  --action fav      add to Parley's favourites\n"
           "  --action cancel   cancel the request (nothing is handed over)\n"
           "  --url URL         share a web link (an absolute URL with a scheme)\n"
           "  FILE...           share files or folders (use -- before names starting with -)\n"
           "  --bundle PATH     run as the extension bundle at PATH instead of the one\n"
           "                    that holds this executable\n"
           "  --help            show this text\n"
           "\n"
           "Exit status: 0 when the request completed, 2 when it was cancelled, 64 on bad\n"
           "arguments.\n";
}

ShareCommandLine ShareCommandLine::parse(const std::vector<std::string>& arguments) {
    ShareCommandLine line;
    auto fail = [&line](const std::string& message) {
        if (line.error_.empty())
            line.error_ = message;
    };

    bool optionsEnded = false;
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
        } else if (name == "--action") {
            const std::optional<std::string> action = takeValue();
            if (!action)
                continue;
            if (line.action_ != Action::None)
                fail("--action given twice");
            if (*action == "send") {
                line.action_ = Action::SendToFriend;
            } else if (*action == "fav") {
                line.action_ = Action::FavToParley;
            } else if (*action == "cancel") {
                line.action_ = Action::Cancel;
            } else {
                fail("unknown action \"" + *action + "\" (send, fav or cancel)");
            }
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
    if (line.action_ == Action::None)
        fail("no --action given (send, fav or cancel)");
    return line;
}
