#pragma once

#include <functional>
#include <utility>

#include "ports/panels.h"

namespace tembrix {

class VideoPlayerManager;

// Pauses the open video while a panel asks the user something.
class PausingPanels final : public Panels {
  public:
    // Returns null while no video is open.
    using OpenPlayer = std::function<VideoPlayerManager*()>;

    PausingPanels(Panels& panels, OpenPlayer openPlayer)
        : panels_(panels), openPlayer_(std::move(openPlayer)) {}

    void open(const OpenPanelRequest& request,
              std::function<void(std::vector<std::filesystem::path>)> answer) override;
    void save(const SavePanelRequest& request,
              std::function<void(std::optional<std::filesystem::path>)> answer) override;
    void alert(const std::string& title, const std::string& message, std::function<void()> closed,
               const std::string& window) override;
    void confirm(const std::string& title, const std::string& message,
                 const std::string& confirmText, std::function<void(bool)> answer) override;
    void reveal(const std::filesystem::path& folder, std::function<void()> failed) override {
        panels_.reveal(folder, std::move(failed));
    }
    void browse(const std::string& url, std::function<void()> failed) override {
        panels_.browse(url, std::move(failed));
    }

  private:
    template <class... Args>
    std::function<void(Args...)> pausing(std::function<void(Args...)> answer) const;

    Panels& panels_;
    OpenPlayer openPlayer_;
};

}  // namespace tembrix
