#include "platform/core/Url.h"

#include <unistd.h>

#include <cctype>
#include <charconv>

namespace platform {

namespace {

bool isUnreserved(unsigned char c) {
    return std::isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

std::string percentEncodePath(const std::string& path) {
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : path) {
        if (c == '/' || isUnreserved(c)) {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

// The byte that the two hex digits at |at| spell, or -1 when they are not two hex digits.
int hexPair(const char* at) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(at, at + 2, value, 16);
    return error == std::errc() && end == at + 2 ? static_cast<int>(value) : -1;
}

std::string percentDecode(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const int byte = hexPair(text.data() + i + 1);
            if (byte >= 0) {
                out += static_cast<char>(byte);
                i += 2;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

// Characters a URL string may hold literally (RFC 3986 reserved and unreserved, plus "%").
bool isURLCharacter(unsigned char c) {
    if (isUnreserved(c))
        return true;
    switch (c) {
        case ':':
        case '/':
        case '?':
        case '#':
        case '[':
        case ']':
        case '@':
        case '!':
        case '$':
        case '&':
        case '\'':
        case '(':
        case ')':
        case '*':
        case '+':
        case ',':
        case ';':
        case '=':
        case '%':
            return true;
        default:
            return false;
    }
}

// The path part of an absolute URL: after "scheme:" and an optional "//authority", up to
// "?" or "#".
std::string pathOfURLText(const std::string& text) {
    size_t start = text.find(':') + 1;
    if (text.compare(start, 2, "//") == 0) {
        start = text.find('/', start + 2);
        if (start == std::string::npos)
            return "";
    }
    size_t end = text.find_first_of("?#", start);
    return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

std::string lastComponentOf(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    if (path == "/")
        return path;
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

Url Url::fileURLWithPath(const std::string& path) {
    Url url;
    url.isFile_ = true;
    url.path_ = path;
    if (path.empty() || path[0] != '/') {
        // A relative path is taken from the current directory, as the platform does.
        char buffer[4096];
        if (getcwd(buffer, sizeof buffer)) {
            std::string base = buffer;
            if (base.back() != '/')
                base += '/';
            url.path_ = base + path;
        }
    }
    return url;
}

std::optional<Url> Url::URLWithString(const std::string& text) {
    size_t colon = text.find(':');
    if (colon == std::string::npos || colon == 0 ||
        !std::isalpha(static_cast<unsigned char>(text[0])))
        return std::nullopt;
    for (size_t i = 0; i < colon; ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (!std::isalnum(c) && c != '+' && c != '-' && c != '.')
            return std::nullopt;
    }
    for (unsigned char c : text)
        if (!isURLCharacter(c))
            return std::nullopt;

    Url url;
    url.text_ = text;
    std::string scheme = text.substr(0, colon);
    for (auto& c : scheme)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (scheme == "file") {
        url.isFile_ = true;
        url.path_ = percentDecode(pathOfURLText(text));
        if (url.path_.empty())
            url.path_ = "/";
    }
    return url;
}

std::string Url::absoluteString() const {
    if (isFile_ && text_.empty())
        return "file://" + percentEncodePath(path_);
    return text_;
}

std::string Url::lastPathComponent() const {
    if (isFile_)
        return lastComponentOf(path_);
    return lastComponentOf(percentDecode(pathOfURLText(text_)));
}

std::string Url::pathExtension() const {
    std::string last = lastPathComponent();
    size_t dot = last.rfind('.');
    if (dot == std::string::npos || last == "/")
        return "";
    return last.substr(dot + 1);
}

}  // namespace platform
