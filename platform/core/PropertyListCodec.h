#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/core/PropertyValue.h"

namespace platform {

// Reads and writes property-list files (XML or binary) through libplist. Internal to platform/.
//
// A dictionary is kept whole as an opaque tree so that values of types this platform does not
// exchange (numbers, dates, data) survive a rewrite by DefaultsSuite.
class PropertyListCodec {
  public:
    // An owned top-level dictionary.
    class Dictionary {
      public:
        Dictionary();  // empty
        ~Dictionary();
        Dictionary(Dictionary&& other) noexcept;
        Dictionary& operator=(Dictionary&& other) noexcept;
        Dictionary(const Dictionary&) = delete;
        Dictionary& operator=(const Dictionary&) = delete;

        // Strings and arrays of strings; other values are left out.
        std::map<std::string, PropertyValue> values() const;
        // Entries keep the order in which they were set: |key| becomes the last entry, also when
        // it was there already, so a reader walking the file sees the latest write last.
        void set(const std::string& key, const PropertyValue& value);
        void remove(const std::string& key);
        // Binary property-list bytes.
        std::string toBinary() const;

      private:
        friend class PropertyListCodec;
        explicit Dictionary(void* root) : root_(root) {}
        void* root_;
    };

    // Parses |bytes| (XML or binary). nullopt when it is not a property list whose top level is
    // a dictionary. Entries that could not be written back are left out: their keys go to
    // |droppedKeys| when it is given (the caller reports them), else they are logged here.
    static std::optional<Dictionary> parseDictionary(
        const std::string& bytes,
        std::vector<std::string>* droppedKeys = nullptr);

    enum class ReadStatus { Ok, Missing, Unreadable, Corrupt };
    // Reads the file at |path| without following a final symbolic link.
    static ReadStatus readFile(const std::string& path, std::string& bytes, std::string& reason);
};

}  // namespace platform
