#include "platform/ui/ViewController.h"

#include "platform/core/Log.h"

namespace platform {

void ViewController::loadView() {
    setView(std::make_shared<View>(NSZeroRect));
}

const std::shared_ptr<View>& ViewController::view() {
    if (!view_) {
        loadView();
        if (!view_)
            Log::write("ViewController: loadView left no view");
    }
    return view_;
}

}  // namespace platform
