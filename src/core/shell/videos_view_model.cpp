#include "core/shell/videos_view_model.h"

#include <algorithm>
#include <cstddef>
#include <stop_token>
#include <utility>

#include "base/file_dates.h"
#include "base/file_url.h"
#include "base/files.h"
#include "base/image.h"
#include "base/shortened.h"
#include "base/utf8_text.h"

namespace tembrix {

namespace {

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

// Names after a heading, such as "Not a video: a.txt, b.txt". A long list is cut off.
std::string listed(const std::string& heading, const std::vector<std::string>& names,
                   const Texts& texts) {
    constexpr std::size_t most = 8;
    std::vector<std::string> shown(
        names.begin(), names.begin() + static_cast<std::ptrdiff_t>(std::min(names.size(), most)));
    std::string line = heading + " " + joined(shown, ", ");
    if (names.size() > most)
        line += ", " + texts.counted("andMore", static_cast<int>(names.size() - most));
    return line;
}

std::string fileName(const std::filesystem::path& file) {
    return shortened(sanitizedUtf8(pathText(file.filename())));
}

}  // namespace

VideosViewModel::VideosViewModel(VideoFilesManager& files, VideosPreviewManager& previews,
                                 WindowsManager& windows, Panels& panels, Scheduler& scheduler,
                                 const Texts& texts, const Locale& locale,
                                 std::function<std::filesystem::path()> guide)
    : files_(files),
      previews_(previews),
      windows_(windows),
      panels_(panels),
      scheduler_(scheduler),
      texts_(texts),
      locale_(locale),
      guide_(std::move(guide)),
      looking_(scheduler) {
    listChanged();
    files_.setUpdateFiles([this](const std::vector<FilesFile>&) {
        listChanged();
        windows_.libraryChanged();
    });
}

VideosViewModel::~VideosViewModel() {
    files_.setUpdateFiles({});
}

void VideosViewModel::listChanged() {
    state.update([&](VideosState& s) {
        s.files = files_.files();
        s.deleted.reset();
        if (const auto* entry = files_.lastDeleted())
            s.deleted = {entry->video.id, entry->title.name};
    });
}

void VideosViewModel::send(VideosAction action) {
    const auto change = [this](auto&& edit) { state.update(edit); };
    std::visit(
        Overloaded{
            [&](const videos::OpenVideo& a) { openVideo(a.id); },
            [&](const videos::DeleteFile& a) { deleteVideo(a.file); },
            [&](const videos::TakeBackDeletion&) { whenReady([this] { takeBackDeletion(); }); },
            [&](const videos::AddFiles& a) { addFiles(a.paths); },
            [&](const videos::AddWaitingVideos&) { addWaitingVideos(); },
            [&](const videos::ShowError& a) { showError(a.title); },
            [&](const videos::DismissError&) {
                change([](VideosState& s) { s.showError = false; });
            },
            [&](const videos::SaveVideoMetadata& a) { saveMatch(a); },
            [&](const videos::CancelMetadata&) {
                change([](VideosState& s) { s.showMetadataSheet = false; });
                nextVideo();
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

void VideosViewModel::takeBackDeletion() {
    const auto* deleted = files_.lastDeleted();
    if (!deleted)
        return;
    const std::string id = deleted->video.id;
    if (files_.takeBackDeletion())
        goToVideo.emit(id);
    else
        showError(texts_.text("videoNotTakenBack"));
}

void VideosViewModel::showError(const std::string& title, const std::string& details) {
    state.update([&](VideosState& s) {
        s.errorTitle = title;
        s.errorDetails = details;
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
    request.extensions = videoExtensions();
    request.kindName = texts_.text("videoFilesKind");
    panels_.open(request, lifetime_.guard([this](const std::vector<std::filesystem::path>& picked) {
        if (!picked.empty())
            videosFound({{picked.front()}, {}});
    }));
}

void VideosViewModel::addFiles(const std::vector<std::filesystem::path>& paths) {
    looking_.run(
        Priority::userInitiated,
        [paths](const std::stop_token& stop) { return findVideos(paths, stop); },
        [this](const FoundVideos& found) { videosFound(found); });
}

// Says first what is not added. The sheets follow.
void VideosViewModel::videosFound(const FoundVideos& found) {
    std::vector<std::string> others;
    for (const auto& other : found.others)
        others.push_back(fileName(other));
    std::vector<std::string> known;
    std::string knownId;
    for (const auto& video : found.videos) {
        if (const VideosData* entry = files_.findByFile(video)) {
            known.push_back(files_.title({*entry, nullptr}).name);
            knownId = entry->id;
        } else if (!isToBeAdded(video)) {
            waiting_.push_back(video);
        }
    }
    std::vector<std::string> details;
    if (!others.empty())
        details.push_back(listed(texts_.text("filesNoVideos"), others, texts_));
    if (!known.empty() && known.size() + others.size() > 1)
        details.push_back(listed(texts_.text("filesInList"), known, texts_));
    if (!knownId.empty())
        goToVideo.emit(knownId);
    if (!details.empty())
        showError(texts_.text("filesNotAdded"), joined(details, "\n"));
    else if (!known.empty())
        showError(texts_.format("videoIsInList", {shortened(known.front())}));
    nextVideo();
}

bool VideosViewModel::isToBeAdded(const std::filesystem::path& file) const {
    return (state->showMetadataSheet && state->videoMetadata.urlString == fileUrl(file)) ||
           std::find(waiting_.begin(), waiting_.end(), file) != waiting_.end();
}

void VideosViewModel::nextVideo() {
    state.update([&](VideosState& s) {
        if (!s.showMetadataSheet && !waiting_.empty()) {
            s.videoMetadata = VideoMetadata{};
            s.videoMetadata.dateTime = scheduler_.now();
            s.videoMetadata.urlString = fileUrl(waiting_.front());
            s.showMetadataSheet = true;
            waiting_.pop_front();
        }
        s.waitingVideos = waiting_.size();
    });
}

std::string VideosViewModel::videoName(const VideoMetadata& match) const {
    return match.videoName([this](Date date) { return locale_.fileStamp(date); });
}

void VideosViewModel::saveMatch(const videos::SaveVideoMetadata& action) {
    state.update([](VideosState& s) { s.showMetadataSheet = false; });
    whenReady([this, action] {
        if (!action.url || !add(*action.url, action))
            showError(texts_.text("alertsFileErrorTitle"),
                      action.url ? fileName(*action.url) : std::string());
    });
    nextVideo();
}

bool VideosViewModel::add(const std::filesystem::path& file,
                          const std::optional<videos::SaveVideoMetadata>& named) {
    if (VideosPreviewManager::isEmptyFile(file))
        return false;
    std::optional<FilesFile> added;
    if (named && !named->underFileName) {
        const VideoMetadata match{named->team1, named->team2, named->score, named->date,
                                  fileUrl(file)};
        added = files_.addMatch(file, match, videoName(match));
    } else {
        added = files_.addVideo(file);
    }
    if (!added)
        return false;
    makePreview(added->videoData.id);
    goToVideo.emit(added->videoData.id);
    return true;
}

void VideosViewModel::addWaitingVideos() {
    std::vector<std::filesystem::path> videos;
    if (state->showMetadataSheet && state->videoMetadata.urlString)
        if (const auto file = pathOfFileUrl(*state->videoMetadata.urlString))
            videos.push_back(*file);
    videos.insert(videos.end(), waiting_.begin(), waiting_.end());
    waiting_.clear();
    state.update([](VideosState& s) {
        s.showMetadataSheet = false;
        s.waitingVideos = 0;
    });
    whenReady([this, videos] {
        std::vector<std::string> refused;
        for (const auto& video : videos)
            if (!add(video, std::nullopt))
                refused.push_back(fileName(video));
        if (!refused.empty())
            showError(texts_.text("alertsFileErrorTitle"), joined(refused, "\n"));
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
    request.extensions = videoExtensions();
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
        showError(texts_.format("videoIsOfAnotherEntry", {files_.title({*other, nullptr}).name}));
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
    const auto page = guide_();
    panels_.browse(fileUrl(page), lifetime_.guard([this, page] {
        showError(texts_.text("guideNotOpened"),
                  texts_.format("guideNotOpenedPlace", {sanitizedUtf8(pathText(page))}));
    }));
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
        if (searchText.empty() || containsIgnoringCase(displayName(file), searchText) ||
            containsIgnoringCase(title(file).name, searchText))
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
