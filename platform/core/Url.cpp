#include "platform/core/Url.h"

#include <unistd.h>

#include <QByteArray>
#include <QUrl>
#include <vector>

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

std::string lastComponentOf(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    if (path == "/")
        return path;
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The percent-decoded path of |url| as raw bytes.
std::string decodedPath(const QUrl& url) {
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
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
    if (!isPrintableAscii(text))
        return std::nullopt;
    const QUrl parsed(QString::fromLatin1(text.data(), static_cast<int>(text.size())),
                      QUrl::StrictMode);
    if (!parsed.isValid() || parsed.isRelative())
        return std::nullopt;
    Url url;
    url.text_ = text;
    if (parsed.scheme() == QLatin1String("file")) {
        const std::string path = decodedPath(parsed);
        const QString host = parsed.host();
        if (path.empty() || path[0] != '/' || path.find('\0') != std::string::npos ||
            !(host.isEmpty() || host == QLatin1String("localhost")))
            return std::nullopt;
        url.isFile_ = true;
        url.path_ = standardizedPath(path);
    }
    return url;
}

std::string Url::absoluteString() const {
    if (isFile_ && text_.empty())
        return "file://" + QByteArray::fromStdString(path_).toPercentEncoding("/").toStdString();
    return text_;
}

std::string Url::lastPathComponent() const {
    if (isFile_)
        return lastComponentOf(path_);
    return lastComponentOf(
        decodedPath(QUrl(QString::fromLatin1(text_.data(), static_cast<int>(text_.size())))));
}

std::string Url::pathExtension() const {
    std::string last = lastPathComponent();
    size_t dot = last.rfind('.');
    if (dot == std::string::npos || last == "/")
        return "";
    return last.substr(dot + 1);
}

}  // namespace platform
