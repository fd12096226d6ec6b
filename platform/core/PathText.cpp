#include "platform/core/PathText.h"

#include <QByteArray>
#include <cctype>

namespace platform {

namespace {

bool isHexDigit(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::string PathText::percentEncoded(const std::string& bytes, const std::string& keep) {
    return QByteArray::fromStdString(bytes)
        .toPercentEncoding(QByteArray::fromStdString(keep))
        .toStdString();
}

std::optional<std::string> PathText::percentDecoded(const std::string& text) {
    // Qt's decoder passes a malformed escape through as it stands; ours refuses it, since the
    // text would then name something other than what it shows.
    for (size_t percent = text.find('%'); percent != std::string::npos;
         percent = text.find('%', percent + 3)) {
        if (percent + 2 >= text.size() || !isHexDigit(text[percent + 1]) ||
            !isHexDigit(text[percent + 2]))
            return std::nullopt;
    }
    return QByteArray::fromPercentEncoding(QByteArray::fromStdString(text)).toStdString();
}

std::string PathText::withoutTrailingSlashes(const std::string& path) {
    const size_t last = path.find_last_not_of('/');
    if (last == std::string::npos)
        return path.empty() ? path : "/";
    return path.substr(0, last + 1);
}

std::string PathText::lastPathComponent(const std::string& path) {
    const std::string trimmed = withoutTrailingSlashes(path);
    const size_t slash = trimmed.rfind('/');
    if (trimmed == "/" || slash == std::string::npos)
        return trimmed;
    return trimmed.substr(slash + 1);
}

std::string PathText::folderOf(const std::string& path) {
    const std::string trimmed = withoutTrailingSlashes(path);
    const size_t slash = trimmed.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : trimmed.substr(0, slash);
}

std::string PathText::schemeOf(const std::string& text) {
    const size_t colon = text.find(':');
    if (colon == std::string::npos || colon == 0 ||
        !std::isalpha(static_cast<unsigned char>(text[0])))
        return {};
    std::string scheme;
    for (size_t i = 0; i < colon; ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (!std::isalnum(c) && c != '+' && c != '-' && c != '.')
            return {};
        scheme += static_cast<char>(std::tolower(c));
    }
    return scheme;
}

// Read by hand rather than by QUrl, whose Unicode text would not keep a name's non-UTF-8 bytes.
std::optional<std::string> PathText::pathOfFileURI(const std::string& uri) {
    if (schemeOf(uri) != "file")
        return std::nullopt;
    std::string rest = uri.substr(std::string("file:").size());
    if (rest.rfind("//", 0) == 0) {
        const size_t slash = rest.find('/', 2);
        const QByteArray host = QByteArray::fromStdString(rest.substr(2, slash - 2));
        if (!host.isEmpty() && host.compare("localhost", Qt::CaseInsensitive) != 0)
            return std::nullopt;
        rest = slash == std::string::npos ? std::string() : rest.substr(slash);
    }
    if (rest.empty() || rest[0] != '/')
        return std::nullopt;
    for (unsigned char c : rest)
        if (c <= ' ' || c == 0x7F || c == '?' || c == '#')
            return std::nullopt;
    std::optional<std::string> path = percentDecoded(rest);
    if (path && path->find('\0') != std::string::npos)
        return std::nullopt;
    return path;
}

}  // namespace platform
