#include "apps/parley-host/HostRecordWriter.h"

#include <cstdio>
#include <fstream>
#include <optional>
#include <variant>

#include "platform/core/DefaultsSuite.h"
#include "share/HandoffKeys.h"

namespace {

// Length of the valid UTF-8 sequence starting at |i|, or 0 when the byte there starts none
// (overlong forms, surrogates and values above U+10FFFF are not valid).
size_t utf8SequenceLength(const std::string& text, size_t i) {
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    size_t length;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0)
            low = 0xA0;
        if (lead == 0xED)
            high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0)
            low = 0x90;
        if (lead == 0xF4)
            high = 0x8F;
    } else {
        return 0;
    }
    if (i + length > text.size())
        return 0;
    if (byte(i + 1) < low || byte(i + 1) > high)
        return 0;
    for (size_t k = 2; k < length; ++k)
        if (byte(i + k) < 0x80 || byte(i + k) > 0xBF)
            return 0;
    return length;
}

std::string valueJson(const std::optional<platform::PropertyValue>& value) {
    if (!value)
        return "null";
    if (const auto* text = std::get_if<std::string>(&*value))
        return HostRecordWriter::quote(*text);
    std::string json = "[";
    const auto& array = std::get<platform::StringArray>(*value);
    for (size_t i = 0; i < array.size(); ++i) {
        if (i > 0)
            json += ',';
        json += HostRecordWriter::quote(array[i]);
    }
    return json + "]";
}

}  // namespace

std::string HostRecordWriter::quote(const std::string& text) {
    std::string json = "\"";
    for (size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const size_t length = utf8SequenceLength(text, i);
        if (length == 0) {
            json += "\\ufffd";
            ++i;
            continue;
        }
        if (length > 1) {
            json.append(text, i, length);
        } else if (c == '"') {
            json += "\\\"";
        } else if (c == '\\') {
            json += "\\\\";
        } else if (c == '\n') {
            json += "\\n";
        } else if (c == '\r') {
            json += "\\r";
        } else if (c == '\t') {
            json += "\\t";
        } else if (c < 0x20 || c == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            json += escaped;
        } else {
            json += static_cast<char>(c);
        }
        i += length;
    }
    return json + "\"";
}

std::string HostRecordWriter::recordLine(const std::string& event,
                                         const platform::DefaultsSuite& store,
                                         const std::vector<std::optional<std::string>>* received) {
    const auto type = store.objectForKey(handoff::kShareTypeKey);
    std::string line = "{\"event\":" + quote(event);
    line += ",\"type\":" + valueJson(type);
    line += ",\"entry\":" + valueJson(store.objectForKey(handoff::kShareEntryKey));
    const auto* typeText = type ? std::get_if<std::string>(&*type) : nullptr;
    if (typeText && *typeText == handoff::kTypeFileUrl) {
        line += ",\"paths\":" + valueJson(store.objectForKey(handoff::kSharePathArrayKey));
        line += ",\"invalidNames\":" +
                valueJson(store.objectForKey(handoff::kShareInvalidFileNamesKey));
        line += ",\"invalidSizes\":" +
                valueJson(store.objectForKey(handoff::kShareInvalidFileSizesKey));
        if (received) {
            line += ",\"received\":[";
            for (size_t i = 0; i < received->size(); ++i)
                line += (i > 0 ? "," : "") + ((*received)[i] ? quote(*(*received)[i]) : "null");
            line += "]";
        }
    } else {
        line += ",\"url\":" + valueJson(store.objectForKey(handoff::kShareUrlKey));
    }
    return line + "}";
}

bool HostRecordWriter::write(const std::string& line) const {
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
    if (recordFile_.empty())
        return true;
    std::ofstream out(recordFile_, std::ios::app | std::ios::binary);
    out << line << '\n';
    out.flush();
    return static_cast<bool>(out);
}
