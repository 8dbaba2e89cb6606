#include "core/shell/videos_view_model.h"

#include <algorithm>
#include <utility>

#include "base/file_dates.h"
#include "base/file_url.h"
#include "base/image.h"
#include "base/utf8_text.h"

namespace tembrix {

namespace {

const std::vector<std::string> videoExtensions{"mp4",  "mov", "avi", "mkv",  "m4v",  "mpg",
                                               "mpeg", "ts",  "mts", "m2ts", "webm", "wmv",
                                               "flv",  "mxf", "3gp", "vob",  "ogv",  "dv"};

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

}  // namespace

VideosViewModel::VideosViewModel(VideoFilesManager& files, VideosPreviewManager& previews,
                                 WindowsManager& windows, Panels& panels, Scheduler& scheduler,
                                 const Texts& texts, const Locale& locale,
                                 std::filesystem::path guides)
    : files_(files),
      previews_(previews),
      windows_(windows),
      panels_(panels),
      scheduler_(scheduler),
      texts_(texts),
      locale_(locale),
      guides_(std::move(guides)) {
    state.update([&](VideosState& s) { s.files = files_.files(); });
    files_.setUpdateFiles([this](const std::vector<FilesFile>& list) {
        state.update([&](VideosState& s) { s.files = list; });
        windows_.libraryChanged();
    });
}

VideosViewModel::~VideosViewModel() {
    files_.setUpdateFiles({});
}

void VideosViewModel::send(VideosAction action) {
    const auto change = [this](auto&& edit) { state.update(edit); };
    std::visit(
        Overloaded{
            [&](const videos::OpenVideo& a) { openVideo(a.id); },
            [&](const videos::DeleteFile& a) { deleteVideo(a.file); },
            [&](const videos::ShowError& a) { showError(a.title); },
            [&](const videos::DismissError&) {
                change([](VideosState& s) { s.showError = false; });
            },
            [&](const videos::SaveVideoMetadata& a) { saveMatch(a); },
            [&](const videos::CancelMetadata&) {
                change([](VideosState& s) { s.showMetadataSheet = false; });
            },
            [&](const videos::ShowRenameSheet& a) {
                change([&](VideosState& s) {
                    s.fileToRename = a.file;
                    s.newFileName = files_.displayName(a.file);
                    s.showRenameSheet = true;
                });
            },
            [&](const videos::RenameVideo& a) {
                const VideoMetadata match{a.team1, a.team2, a.score, scheduler_.now(), {}};
                rename(a.file, videoName(match));
                change([](VideosState& s) { s.showRenameSheet = false; });
            },
            [&](const videos::RenameSimpleVideo& a) {
                rename(a.file, a.name);
                change([](VideosState& s) { s.showRenameSheet = false; });
            },
            [&](const videos::CancelRename&) {
                change([](VideosState& s) { s.showRenameSheet = false; });
            },
            [&](const videos::ToggleFavorite& a) {
                whenReady([this, id = a.file.videoData.id] { files_.toggleFavorite(id); });
            },
            [&](const videos::ShowRebindAlert& a) { showRebindAlert(a.file); },
            [&](const videos::CancelRebind&) {
                change([](VideosState& s) { s.showRebindAlert = false; });
            },
            [&](const videos::PickRebindFile&) { pickRebindFile(); },
            [&](const videos::RebindVideo& a) { whenReady([this, a] { rebind(a.file, a.url); }); },
            [&](const videos::OpenFiles&) { pickVideo(); },
            [&](const videos::OpenGuide&) { openGuide(); },
            [&](const videos::RefreshFiles&) {
                auto list = files_.reloadFiles();
                change([&](VideosState& s) { s.files = std::move(list); });
            },
        },
        action);
}

void VideosViewModel::openVideo(const std::string& videoId) {
    const auto& files = state->files;
    const auto found = std::find_if(files.begin(), files.end(), [&](const FilesFile& file) {
        return file.videoData.id == videoId;
    });
    if (found == files.end())
        return;
    const FilesFile file = *found;
    if (files_.resolveVideoURL(file.videoData.bookmark))
        openProject(file.videoData.id);
    else
        showRebindAlert(file);
}

void VideosViewModel::openProject(const std::string& videoId) {
    whenReady([this, videoId] {
        const bool anotherIsOpen = windows_.project();
        windows_.openProject(videoId);
        if (windows_.project() && !anotherIsOpen)
            files_.noteOpening(videoId, scheduler_.now());
    });
}

template <class Task>
void VideosViewModel::whenReady(Task task) {
    auto guarded = lifetime_.guard(std::move(task));
    if (whenReady_)
        whenReady_(std::move(guarded));
    else
        guarded();
}

void VideosViewModel::deleteVideo(const FilesFile& file) {
    whenReady([this, file] {
        if (!files_.deleteVideo(file))
            showError(texts_.text("videoNotDeleted"));
    });
}

void VideosViewModel::rename(const FilesFile& file, const std::string& name) {
    whenReady([this, file, name] { files_.renameVideo(file, name); });
}

void VideosViewModel::showError(const std::string& title) {
    state.update([&](VideosState& s) {
        s.errorTitle = title;
        s.showError = true;
    });
}

void VideosViewModel::showRebindAlert(const FilesFile& file) {
    state.update([&](VideosState& s) {
        s.fileToRebind = file;
        s.showRebindAlert = true;
    });
}

void VideosViewModel::pickVideo() {
    OpenPanelRequest request;
    request.title = texts_.text("addVideoTitle");
    request.extensions = videoExtensions;
    request.kindName = texts_.text("videoFilesKind");
    panels_.open(request, lifetime_.guard([this](const std::vector<std::filesystem::path>& picked) {
        if (!picked.empty())
            filePicked(picked.front());
    }));
}

void VideosViewModel::filePicked(const std::filesystem::path& file) {
    state.update([&](VideosState& s) {
        s.videoMetadata = VideoMetadata{};
        s.videoMetadata.dateTime = scheduler_.now();
        s.videoMetadata.urlString = fileUrl(file);
        s.showMetadataSheet = true;
    });
}

std::string VideosViewModel::videoName(const VideoMetadata& match) const {
    return match.videoName([this](Date date) { return locale_.fileStamp(date); });
}

void VideosViewModel::saveMatch(const videos::SaveVideoMetadata& action) {
    state.update([](VideosState& s) { s.showMetadataSheet = false; });
    if (!action.url || VideosPreviewManager::isEmptyFile(*action.url)) {
        showError(texts_.text("alertsFileErrorTitle"));
        return;
    }
    const VideoMetadata match{action.team1, action.team2, action.score, action.date,
                              fileUrl(*action.url)};
    whenReady([this, file = *action.url, name = videoName(match)] {
        if (const auto added = files_.addVideoNamed(file, name))
            makePreview(added->videoData.id);
        else
            showError(texts_.text("alertsFileErrorTitle"));
    });
}

void VideosViewModel::makePreview(const std::string& videoId) {
    const VideosData* entry = files_.findById(videoId);
    const auto video = entry ? files_.resolveVideoURL(entry->bookmark) : std::nullopt;
    if (!video)
        return;
    previews_.makePreview(
        *video,
        lifetime_.guard([this, videoId](const Result<std::shared_ptr<const ImageBuffer>>& preview) {
            if (preview)
                files_.setPreview(videoId, *preview);
        }));
}

void VideosViewModel::pickRebindFile() {
    const auto file = state->fileToRebind;
    state.update([](VideosState& s) { s.showRebindAlert = false; });
    if (!file)
        return;
    OpenPanelRequest request;
    request.title = texts_.text("selectVideoFile");
    request.message = texts_.text("selectNewVideoFileMessage");
    request.extensions = videoExtensions;
    request.kindName = texts_.text("videoFilesKind");
    panels_.open(
        request,
        lifetime_.guard([this, file = *file](const std::vector<std::filesystem::path>& picked) {
            if (!picked.empty())
                send(videos::RebindVideo{file, picked.front()});
        }));
}

void VideosViewModel::rebind(const FilesFile& file, const std::filesystem::path& url) {
    const std::string id = file.videoData.id;
    if (const VideosData* other = files_.findByFile(url, id)) {
        showError(texts_.format("videoIsOfAnotherEntry", {files_.displayName({*other, nullptr})}));
        return;
    }
    if (!files_.rebindVideo(id, url)) {
        showError("Не удалось перепривязать видео");
        return;
    }
    state.update([](VideosState& s) {
        s.showRebindAlert = false;
        s.fileToRebind.reset();
    });
    makePreview(id);
    openProject(id);
}

void VideosViewModel::openGuide() {
    const bool russian = locale_.preferredLocalization().starts_with("ru");
    panels_.browse(fileUrl(guides_ / (russian ? "ru.html" : "en.html")));
}

std::string VideosViewModel::displayName(const FilesFile& file) const {
    return files_.displayName(file);
}

std::optional<std::filesystem::path> VideosViewModel::videoPath(const FilesFile& file) const {
    return files_.resolveVideoURL(file.videoData.bookmark);
}

std::filesystem::path VideosViewModel::previewFile(const std::filesystem::path& video) const {
    return previews_.previewFile(video);
}

Date VideosViewModel::lastAccess(const FilesFile& file) const {
    const auto path = videoPath(file);
    const auto read = path ? lastAccessDate(*path) : std::nullopt;
    if (!read)
        return scheduler_.now();
    return std::max(*read, files_.lastOpening(file.videoData.id).value_or(*read));
}

std::vector<FilesFile> VideosViewModel::filteredFiles(const std::string& searchText,
                                                      VideoFilter filter) const {
    std::vector<FilesFile> result;
    for (const auto& file : state->files) {
        if (filter == VideoFilter::favorites && file.videoData.isFavorite != true)
            continue;
        if (searchText.empty() || containsIgnoringCase(displayName(file), searchText))
            result.push_back(file);
    }
    if (filter == VideoFilter::recent) {
        std::vector<std::pair<Date, FilesFile>> dated;
        dated.reserve(result.size());
        for (auto& file : result)
            dated.emplace_back(lastAccess(file), std::move(file));
        std::stable_sort(dated.begin(), dated.end(),
                         [](const auto& a, const auto& b) { return a.first > b.first; });
        for (std::size_t i = 0; i < dated.size(); ++i)
            result[i] = std::move(dated[i].second);
    }
    return result;
}

}  // namespace tembrix
