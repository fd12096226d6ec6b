#pragma once

#include <string>

#include "platform/core/Bundle.h"
#include "platform/core/Log.h"
#include "platform/ui/Color.h"

// What the controller's source files share: its log lines and its texts.
namespace controller_support {

// The controller's lines, and its one error line.
inline constexpr platform::Logger kLog("[ShareViewController]: ");
inline constexpr platform::Logger kErrorLog("[ShareViewController][error]: ");

// Every text the sheet shows comes from this table, with an empty default: a missing entry
// shows its key.
inline std::string localized(const std::string& key) {
    return platform::Bundle::mainBundle()->localizedStringForKey(key, "", "ShareLocalizable");
}

// A translucent black: the press tint of the rows and of the Cancel button.
inline platform::ColorPtr blackWithAlpha(double alpha) {
    return platform::Color::colorWithWhite(0.0, alpha);
}

}  // namespace controller_support
