#include "core/shell/start_up.h"

#include <utility>

#include "core/collections/tag_library_manager.h"
#include "core/safety/data_sync_manager.h"
#include "core/storage/video_files_manager.h"

namespace tembrix {

StartUp::StartUp(DataSyncManager& dataSync, VideoFilesManager& library,
                 TagLibraryManager& tagLibrary)
    : dataSync_(dataSync), library_(library), tagLibrary_(tagLibrary) {}

void StartUp::run() {
    stage_ = Stage::repairing;
    dataSync_.prepare();
    stage_ = Stage::synchronizing;
    dataSync_.syncOnLaunch(lifetime_.guard([this] { becomeReady(); }));
    library_.start();
}

void StartUp::becomeReady() {
    tagLibrary_.start();
    stage_ = Stage::ready;
    for (const auto& task : std::exchange(waiting_, {}))
        task();
}

void StartUp::whenReady(std::function<void()> task) {
    if (stage_ == Stage::ready)
        task();
    else
        waiting_.push_back(std::move(task));
}

}  // namespace tembrix
