#include "apps/parley-share/ShareCommandLine.h"

#include <cmath>
#include <cstdlib>

#include "platform/core/PathText.h"
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

// An operand as a desktop passes it: a path (%F), a file URI (%U) or a parley-share: link (the
// browser's scheme handler).
struct Operand {
    bool isLink = false;
    std::string value;  // the path, or the link
    std::string error;  // why the operand cannot be shared; empty when it can
};

Operand fileURIOperand(const std::string& uri) {
    if (const std::optional<std::string> path = platform::PathText::pathOfFileURI(uri))
        return {false, *path, {}};
    return {false, {}, "not a local file URI: \"" + uri + "\""};
}

// The host of an absolute "scheme://authority/..." URL: the authority without its user
// information and port; empty when there is none.
std::string hostOf(const std::string& url) {
    const size_t start = url.find("://");
    if (start == std::string::npos)
        return {};
    const size_t end = url.find_first_of("/?#", start + 3);
    std::string authority = url.substr(start + 3, end == std::string::npos ? end : end - start - 3);
    if (const size_t at = authority.rfind('@'); at != std::string::npos)
        authority.erase(0, at + 1);
    const size_t colon = authority.rfind(':');
    if (colon != std::string::npos && authority.find(']', colon) == std::string::npos)
        authority.erase(colon);
    return authority;
}

// "parley-share:" followed by a percent-encoded web link. Any web page can open such links, so
// only an absolute http or https URL with a host gets through: never a local file, a script
// (javascript:, vbscript:), a network share, or another parley-share: link.
Operand linkOperand(const std::string& uri) {
    const std::optional<std::string> link =
        platform::PathText::percentDecoded(uri.substr(std::string("parley-share:").size()));
    if (!link || !platform::Url::URLWithString(*link))
        return {true, {}, "not an encoded web link: \"" + uri + "\""};
    const std::string scheme = platform::PathText::schemeOf(*link);
    if (scheme != "http" && scheme != "https")
        return {true,
                {},
                "only http and https links can be shared, not " + scheme + ": in \"" + uri + "\""};
    if (hostOf(*link).empty())
        return {true, {}, "a web link without a host: \"" + uri + "\""};
    return {true, *link, {}};
}

Operand readOperand(const std::string& argument) {
    const std::string scheme = platform::PathText::schemeOf(argument);
    if (scheme == "file")
        return fileURIOperand(argument);
    if (scheme == "parley-share")
        return linkOperand(argument);
    // Remote files (sftp://, smb://) would need a copy first; links go with --url.
    if (!scheme.empty() && argument.compare(scheme.size() + 1, 2, "//") == 0)
        return {false, {}, "only local files can be shared, not \"" + argument + "\""};
    return {false, argument, {}};
}

}  // namespace

std::string ShareCommandLine::usage() {
    return "Usage: parley-share [OPTIONS] (--url URL | parley-share:LINK | FILE...)\n"
           "       parley-share --help\n"
           "\n"
           "Shares one link or one or more files with Parley, the way the Share menu would:\n"
           "shows the share sheet and waits for a click on a row or on Cancel. Without a\n"
           "display, give --action, --snapshot or --describe.\n"
           "\n"
           "  --url URL          share a web link (an absolute URL with a scheme); a\n"
           "                     file:// URI shares that file, as FILE does\n"
           "  parley-share:LINK  share the percent-encoded web link LINK (from a browser):\n"
           "                     an http or https URL with a host\n"
           "  FILE...            share files or folders, as paths or file:// URIs (use --\n"
           "                     before names starting with - or looking like a URI)\n"
           "  --action TARGET    click TARGET instead of waiting for the person:\n"
           "                       send    the send-to-friend row\n"
           "                       fav     the add-to-favourites row\n"
           "                       cancel  the Cancel button (nothing is handed over)\n"
           "  --press TARGET     press the mouse on TARGET (without releasing it) first\n"
           "  --focus TARGET     move the keyboard focus to TARGET with Tab first\n"
           "  --snapshot PATH    write the sheet as shown, after --press and --focus, as a\n"
           "                     PNG picture\n"
           "  --scale S          pixels per point of the snapshot (default 1, at most 8)\n"
           "  --describe         print the sheet's window and view tree, after --press and\n"
           "                     --snapshot, and stop without handing anything over\n"
           "  --gather           files of one selection come in several processes (as\n"
           "                     Thunar starts them): those started together show one sheet\n"
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

    // A link goes to url_, a file to files_, whether it came as an operand or after --url.
    auto take = [&line, &fail](const Operand& operand) {
        if (!operand.error.empty())
            fail(operand.error);
        else if (!operand.isLink)
            line.files_.push_back(operand.value);
        else if (line.url_)
            fail("a link given twice");
        else
            line.url_ = operand.value;
    };

    bool optionsEnded = false;
    bool scaleGiven = false;
    bool urlOptionGiven = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (optionsEnded) {
            line.files_.push_back(argument);
            continue;
        }
        if (argument.empty() || argument[0] != '-' || argument == "-") {
            take(readOperand(argument));
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
        } else if (name == "--action" || name == "--press" || name == "--focus") {
            const std::optional<std::string> value = takeValue();
            if (!value)
                continue;
            Action& target = name == "--action"  ? line.action_
                             : name == "--press" ? line.press_
                                                 : line.focus_;
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
        } else if (name == "--gather") {
            line.gather_ = true;
        } else if (name == "--url") {
            const std::optional<std::string> url = takeValue();
            if (!url)
                continue;
            if (urlOptionGiven)
                fail("--url given twice");
            urlOptionGiven = true;
            // A file URI shares that file, as the same URI given as an operand does.
            if (platform::PathText::schemeOf(*url) == "file")
                take(fileURIOperand(*url));
            else if (!platform::Url::URLWithString(*url))
                fail("not an absolute URL: \"" + *url + "\"");
            else
                take({true, *url, {}});
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
        fail("share either a link or files, not both");
    if (!line.url_ && line.files_.empty())
        fail("nothing to share: give --url URL or files");
    if (line.describe_ && line.action_ != Action::None)
        fail("--describe hands nothing over; leave out --action");
    if (scaleGiven && !line.snapshotPath_)
        fail("--scale applies only to --snapshot");
    return line;
}
