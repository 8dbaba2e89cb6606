#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace tembrix {

class DataSyncManager;
class TagLibraryManager;
class VideoFilesManager;

// The order in which the program begins to use the user's data. Each stage may rely on what the
// stages before it have done. Main thread only.
class StartUp {
  public:
    enum class Stage {
        waiting,        // nothing has been read
        repairing,      // what a killed process left, the list of videos, the collection index
        synchronizing,  // the library is up; the launch work runs in the background
        ready,          // the launch work has ended and the collections are being read
    };

    StartUp(DataSyncManager& dataSync, VideoFilesManager& library, TagLibraryManager& tagLibrary);

    // Runs the stages. It returns when the library is up.
    void run();

    Stage stage() const { return stage_; }
    // Runs a task as soon as the program is ready, at once if it is. What reads or writes timelines
    // and collections waits here, because the launch work may replace them.
    void whenReady(std::function<void()> task);

  private:
    void becomeReady();

    DataSyncManager& dataSync_;
    VideoFilesManager& library_;
    TagLibraryManager& tagLibrary_;
    Stage stage_ = Stage::waiting;
    std::vector<std::function<void()>> waiting_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
