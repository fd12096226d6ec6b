#include "platform/core/Url.h"

#include <unistd.h>

#include <QUrl>
#include <vector>

#include "platform/core/PathText.h"

namespace platform {

namespace {

// Resolves ".", ".." and empty components of an absolute path by its text, byte for byte (the
// path need not be UTF-8, so QDir::cleanPath, which works on Unicode text, cannot be used).
std::string standardizedPath(const std::string& path) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string::npos)
            end = path.size();
        std::string part = path.substr(start, end - start);
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(std::move(part));
        }
        start = end + 1;
    }
    std::string out;
    for (const auto& part : parts)
        out += "/" + part;
    return out.empty() ? "/" : out;
}

// The percent-decoded path of |url| as raw bytes.
std::string decodedPath(const QUrl& url) {
    return PathText::percentDecoded(url.path(QUrl::FullyEncoded).toStdString()).value_or("");
}

bool isPrintableAscii(const std::string& text) {
    for (unsigned char c : text)
        if (c <= 0x20 || c >= 0x7f)
            return false;
    return true;
}

}  // namespace

Url Url::fileURLWithPath(const std::string& path) {
    std::string absolute = path;
    if (path.empty() || path[0] != '/') {
        // A relative path is taken from the current directory, as the platform does.
        char buffer[4096];
        if (getcwd(buffer, sizeof buffer))
            absolute = std::string(buffer) + "/" + path;
    }
    Url url;
    url.isFile_ = true;
    url.path_ = absolute.empty() || absolute[0] != '/' ? absolute : standardizedPath(absolute);
    return url;
}

std::optional<Url> Url::URLWithString(const std::string& text) {
    Url url;
    url.text_ = text;
    // A file URL is read as the command line reads a file URI, so both name the same file.
    if (PathText::schemeOf(text) == "file") {
        const std::optional<std::string> path = PathText::pathOfFileURI(text);
        if (!path)
            return std::nullopt;
        url.isFile_ = true;
        url.path_ = standardizedPath(*path);
        return url;
    }
    if (!isPrintableAscii(text))
        return std::nullopt;
    const QUrl parsed(QString::fromLatin1(text.data(), static_cast<int>(text.size())),
                      QUrl::StrictMode);
    if (!parsed.isValid() || parsed.isRelative())
        return std::nullopt;
    return url;
}

std::string Url::absoluteString() const {
    if (isFile_ && text_.empty())
        return "file://" + PathText::percentEncoded(path_, "/");
    return text_;
}

std::string Url::lastPathComponent() const {
    if (isFile_)
        return PathText::lastPathComponent(path_);
    return PathText::lastPathComponent(
        decodedPath(QUrl(QString::fromLatin1(text_.data(), static_cast<int>(text_.size())))));
}

std::string Url::pathExtension() const {
    std::string last = lastPathComponent();
    size_t dot = last.rfind('.');
    if (dot == std::string::npos)
        return "";
    return last.substr(dot + 1);
}

std::string Url::host() const {
    if (isFile_)
        return {};
    const size_t start = text_.find("://");
    if (start == std::string::npos)
        return {};
    std::string authority = text_.substr(start + 3);
    authority = authority.substr(0, authority.find_first_of("/?#"));
    const size_t at = authority.rfind('@');
    if (at != std::string::npos)
        authority = authority.substr(at + 1);
    if (!authority.empty() && authority.front() == '[')
        return authority.substr(0, authority.find(']') + 1);
    return authority.substr(0, authority.find(':'));
}

}  // namespace platform
