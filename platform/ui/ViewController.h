#pragma once

#include <memory>
#include <string>

#include "platform/core/ExtensionContext.h"
#include "platform/ui/Responder.h"
#include "platform/ui/View.h"

namespace platform {

// NSViewController: owns a root view, loaded on first request. Main thread only: construction
// and loading the view abort on another thread (the controller may still be released on any).
class ViewController : public Responder, public std::enable_shared_from_this<ViewController> {
  public:
    ViewController();
    ~ViewController() override = default;

    // nibName: the interface whose root view loadView makes (a plain view here).
    virtual std::string nibName() const { return {}; }
    // loadView: the base makes a plain root view.
    virtual void loadView();
    // view: loads the view the first time.
    const std::shared_ptr<View>& view();
    void setView(std::shared_ptr<View> view) { view_ = std::move(view); }
    bool isViewLoaded() const { return view_ != nullptr; }

    // The request this controller serves (an extension's principal controller).
    const std::shared_ptr<ExtensionContext>& extensionContext() const { return context_; }
    void setExtensionContext(std::shared_ptr<ExtensionContext> context) {
        context_ = std::move(context);
    }

  private:
    std::shared_ptr<View> view_;
    std::shared_ptr<ExtensionContext> context_;
};

}  // namespace platform
