#include "platform/core/PropertyListCodec.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QString>
#include <QUtf8StringView>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/core/Log.h"

namespace platform {

namespace {

const Logger kLog("PropertyList: ");

// libplist makes no thread-safety promise for its parsers; files are small, so one lock is cheap.
std::mutex& codecMutex() {
    static std::mutex mutex;
    return mutex;
}

// Larger files are not hand-off records or string tables; refusing them bounds memory use.
constexpr off_t kMaxFileBytes = 16 * 1024 * 1024;

// Property-list strings are Unicode; libplist cuts a string at its first byte that is not UTF-8
// (a file name in another encoding, say). Such a string is kept whole instead, each stray byte
// becoming U+FFFD.
plist_t newString(const std::string& text) {
    const QByteArray bytes = QByteArray::fromRawData(text.data(), static_cast<int>(text.size()));
    const QByteArray valid = QString::fromUtf8(bytes).toUtf8();
    if (valid == bytes)
        return plist_new_string(text.c_str());
    kLog.write("text that is not UTF-8 is stored with U+FFFD for its stray bytes [" +
               valid.toStdString() + "].");
    return plist_new_string(valid.constData());
}

// A string holding a NUL byte (possible in a binary property list) is no text of ours; it is
// read as absent. (libplist's plist_get_string_val aborts on one.)
std::optional<std::string> stringOf(plist_t node) {
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    if (!text || std::memchr(text, '\0', length))
        return std::nullopt;
    return std::string(text, length);
}

// Calls |visit| with each item of |array| in order while it returns true; false when one did not.
// Walked by iterator: libplist finds an item of a parsed array by index, and counts its items,
// by walking the array from its start, which makes an indexed loop quadratic.
template <typename Visit>
bool everyItem(plist_t array, Visit visit) {
    plist_array_iter iter = nullptr;
    plist_array_new_iter(array, &iter);
    bool ok = true;
    while (iter && ok) {
        plist_t item = nullptr;
        plist_array_next_item(array, iter, &item);
        if (!item)
            break;
        ok = visit(item);
    }
    std::free(iter);
    return ok;
}

std::optional<PropertyValue> valueOf(plist_t node) {
    if (auto text = stringOf(node))
        return PropertyValue(*text);
    if (!node || plist_get_node_type(node) != PLIST_ARRAY)
        return std::nullopt;
    StringArray array;
    const bool allText = everyItem(node, [&array](plist_t item) {
        auto text = stringOf(item);
        if (text)
            array.push_back(std::move(*text));
        return text.has_value();
    });
    if (!allText)
        return std::nullopt;  // a mixed array is not one of our values
    return PropertyValue(std::move(array));
}

bool isText(const char* text, size_t length) {
    return !std::memchr(text, '\0', length) &&
           QUtf8StringView(text, static_cast<qsizetype>(length)).isValidUtf8();
}

// Whether every string and key in |node| is UTF-8 without NUL bytes. libplist reads others from
// a file but cannot write them back (its binary writer overruns its buffer on them).
bool canBeRewritten(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_STRING: {
            uint64_t length = 0;
            const char* text = plist_get_string_ptr(node, &length);
            return text && isText(text, length);
        }
        case PLIST_ARRAY:
            return everyItem(node, canBeRewritten);
        case PLIST_DICT: {
            bool ok = true;
            plist_dict_iter iter = nullptr;
            plist_dict_new_iter(node, &iter);
            for (char* key = nullptr; iter && ok; key = nullptr) {
                plist_t item = nullptr;
                plist_dict_next_item(node, iter, &key, &item);
                if (!key)
                    break;
                ok = isText(key, std::strlen(key)) && canBeRewritten(item);
                std::free(key);
            }
            std::free(iter);
            return ok;
        }
        default:
            return true;
    }
}

// Entries that could not be written back would make every later flush fail or write a file that
// nobody can read: they are dropped when the file is read, and their keys (as text) returned.
std::vector<std::string> dropEntriesThatCannotBeRewritten(plist_t dict) {
    std::vector<std::string> dropped;
    plist_dict_iter iter = nullptr;
    plist_dict_new_iter(dict, &iter);
    for (char* key = nullptr; iter; key = nullptr) {
        plist_t node = nullptr;
        plist_dict_next_item(dict, iter, &key, &node);
        if (!key)
            break;
        if (!isText(key, std::strlen(key)) || !canBeRewritten(node))
            dropped.emplace_back(key);
        std::free(key);
    }
    std::free(iter);
    for (auto& key : dropped) {
        plist_dict_remove_item(dict, key.c_str());
        key = QString::fromUtf8(key.data(), static_cast<int>(key.size())).toStdString();
    }
    return dropped;
}

}  // namespace

PropertyListCodec::Dictionary::Dictionary() : root_(plist_new_dict()) {}

PropertyListCodec::Dictionary::~Dictionary() {
    if (root_)
        plist_free(static_cast<plist_t>(root_));
}

PropertyListCodec::Dictionary::Dictionary(Dictionary&& other) noexcept : root_(other.root_) {
    other.root_ = nullptr;
}

PropertyListCodec::Dictionary& PropertyListCodec::Dictionary::operator=(
    Dictionary&& other) noexcept {
    if (this != &other) {
        if (root_)
            plist_free(static_cast<plist_t>(root_));
        root_ = other.root_;
        other.root_ = nullptr;
    }
    return *this;
}

std::map<std::string, PropertyValue> PropertyListCodec::Dictionary::values() const {
    std::map<std::string, PropertyValue> out;
    if (!root_)
        return out;
    std::lock_guard<std::mutex> lock(codecMutex());
    plist_t dict = static_cast<plist_t>(root_);
    plist_dict_iter iter = nullptr;
    plist_dict_new_iter(dict, &iter);
    if (!iter)
        return out;
    for (;;) {
        char* key = nullptr;
        plist_t node = nullptr;
        plist_dict_next_item(dict, iter, &key, &node);
        if (!key)
            break;
        if (auto value = valueOf(node))
            out.emplace(key, std::move(*value));
        std::free(key);
    }
    std::free(iter);
    return out;
}

void PropertyListCodec::Dictionary::set(const std::string& key, const PropertyValue& value) {
    if (!root_)
        root_ = plist_new_dict();
    std::lock_guard<std::mutex> lock(codecMutex());
    // Setting a key in place would keep its old position.
    if (plist_dict_get_item(static_cast<plist_t>(root_), key.c_str()))
        plist_dict_remove_item(static_cast<plist_t>(root_), key.c_str());
    plist_t node;
    if (const auto* text = std::get_if<std::string>(&value)) {
        node = newString(*text);
    } else {
        node = plist_new_array();
        for (const auto& item : std::get<StringArray>(value))
            plist_array_append_item(node, newString(item));
    }
    plist_dict_set_item(static_cast<plist_t>(root_), key.c_str(), node);
}

void PropertyListCodec::Dictionary::remove(const std::string& key) {
    if (!root_)
        return;
    std::lock_guard<std::mutex> lock(codecMutex());
    if (plist_dict_get_item(static_cast<plist_t>(root_), key.c_str()))
        plist_dict_remove_item(static_cast<plist_t>(root_), key.c_str());
}

std::string PropertyListCodec::Dictionary::toBinary() const {
    std::lock_guard<std::mutex> lock(codecMutex());
    plist_t root = root_ ? static_cast<plist_t>(root_) : nullptr;
    plist_t empty = nullptr;
    if (!root)
        root = empty = plist_new_dict();
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    std::string out = bytes ? std::string(bytes, length) : std::string();
    if (bytes)
        plist_to_bin_free(bytes);
    if (empty)
        plist_free(empty);
    return out;
}

std::optional<PropertyListCodec::Dictionary> PropertyListCodec::parseDictionary(
    const std::string& bytes,
    std::vector<std::string>* droppedKeys) {
    if (bytes.empty())
        return std::nullopt;
    std::lock_guard<std::mutex> lock(codecMutex());
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
    if (!root)
        return std::nullopt;
    if (plist_get_node_type(root) != PLIST_DICT) {
        plist_free(root);
        return std::nullopt;
    }
    std::vector<std::string> dropped = dropEntriesThatCannotBeRewritten(root);
    if (droppedKeys)
        *droppedKeys = std::move(dropped);
    else
        for (const auto& key : dropped)
            kLog.write("an entry that cannot be written back is dropped [" + key + "].");
    return Dictionary(root);
}

PropertyListCodec::ReadStatus PropertyListCodec::readFile(const std::string& path,
                                                          std::string& bytes,
                                                          std::string& reason) {
    bytes.clear();
    int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT)
            return ReadStatus::Missing;
        reason = std::strerror(errno);
        return ReadStatus::Unreadable;
    }
    struct stat st {};
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        reason = "not a regular file";
        ::close(fd);
        return ReadStatus::Unreadable;
    }
    if (st.st_size > kMaxFileBytes) {
        reason = "file too large";
        ::close(fd);
        return ReadStatus::Unreadable;
    }
    char buffer[65536];
    for (;;) {
        ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            reason = std::strerror(errno);
            ::close(fd);
            return ReadStatus::Unreadable;
        }
        if (n == 0)
            break;
        bytes.append(buffer, static_cast<size_t>(n));
        if (bytes.size() > static_cast<size_t>(kMaxFileBytes)) {
            reason = "file too large";
            ::close(fd);
            return ReadStatus::Unreadable;
        }
    }
    ::close(fd);
    return ReadStatus::Ok;
}

}  // namespace platform
