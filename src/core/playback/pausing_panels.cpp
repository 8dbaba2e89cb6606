#include "core/playback/pausing_panels.h"

#include <memory>

#include "base/signal.h"

#include "core/playback/video_player_manager.h"

namespace tembrix {

// The answer may ask the next question, so the pause ends after it.
template <class... Args>
std::function<void(Args...)> PausingPanels::pausing(std::function<void(Args...)> answer) const {
    VideoPlayerManager* player = openPlayer_();
    const auto pause = std::make_shared<Subscription>();
    if (player)
        *pause = player->pauseMeanwhile();
    return [pause, answer = std::move(answer)](Args... args) {
        if (answer)
            answer(std::move(args)...);
        pause->reset();
    };
}

void PausingPanels::open(const OpenPanelRequest& request,
                         std::function<void(std::vector<std::filesystem::path>)> answer) {
    panels_.open(request, pausing(std::move(answer)));
}

void PausingPanels::save(const SavePanelRequest& request,
                         std::function<void(std::optional<std::filesystem::path>)> answer) {
    // A panel that belongs to a window may have to wait for the user; whoever opens it pauses then.
    panels_.save(request, request.window.empty() ? pausing(std::move(answer)) : std::move(answer));
}

void PausingPanels::alert(const std::string& title, const std::string& message,
                          std::function<void()> closed, const std::string& window) {
    panels_.alert(title, message, pausing(std::move(closed)), window);
}

void PausingPanels::confirm(const std::string& title, const std::string& message,
                            const std::string& confirmText, std::function<void(bool)> answer) {
    panels_.confirm(title, message, confirmText, pausing(std::move(answer)));
}

}  // namespace tembrix
