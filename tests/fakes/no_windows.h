#pragma once

#include "core/shell/windows_manager.h"

namespace tembrix {

// Windows of a project without widgets.
class NoWindows final : public WindowFactory {
  public:
    struct Window final : ProjectWindow {
        void setTitle(const std::string&) override {}
        void setFirstFrame(const Rect&) override {}
        void show() override {}
        void detach() override {}
    };
    std::unique_ptr<ProjectWindow> make(const WindowRow&, const std::string&, Callbacks) override {
        return std::make_unique<Window>();
    }
    std::optional<Rect> mainScreenFrame() const override { return std::nullopt; }
};

}  // namespace tembrix
