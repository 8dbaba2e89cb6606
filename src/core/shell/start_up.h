#pragma once

#include <functional>
#include <vector>

#include "core/background/lifetime.h"

namespace tembrix {

class DataSyncManager;
class TagLibraryManager;
class VideoFilesManager;

// The order in which the program starts to use the user's data. Each stage relies on the previous
// ones. Main thread only.
class StartUp {
  public:
    enum class Stage {
        waiting,        // nothing was read yet
        repairing,      // damage after a crash, the list of videos and the collection index
        synchronizing,  // the library is loaded; the launch work runs in the background
        ready,          // the launch work has ended, and the collections are being loaded
    };

    StartUp(DataSyncManager& dataSync, VideoFilesManager& library, TagLibraryManager& tagLibrary);

    // Runs the stages. Returns when the library is loaded.
    void run();

    Stage stage() const { return stage_; }
    // Runs a task once the program is ready; immediately if it is ready already. Tasks that read or
    // write timelines and collections must use this, because the launch work may replace them.
    void whenReady(std::function<void()> task);

  private:
    void becomeReady();

    DataSyncManager& dataSync_;
    VideoFilesManager& library_;
    TagLibraryManager& tagLibrary_;
    Stage stage_ = Stage::waiting;
    std::vector<std::function<void()>> waiting_;
    Lifetime lifetime_;
};

}  // namespace tembrix
