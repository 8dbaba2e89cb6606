#include "adapters/ffmpeg/ffmpeg_media.h"

#include <algorithm>

#include "base/library_messages.h"

#include "adapters/ffmpeg/av_handles.h"
#include "adapters/ffmpeg/frame_reader.h"
#include "adapters/ffmpeg/frame_times.h"
#include "adapters/ffmpeg/media_source.h"
#include "adapters/ffmpeg/pictures.h"

namespace tembrix {

namespace {

constexpr std::size_t filesKeptOpen = 3;

}  // namespace

FfmpegMedia::FfmpegMedia() {
    if (!wantsLibraryMessages())
        av_log_set_level(AV_LOG_FATAL);
}

FfmpegMedia::~FfmpegMedia() = default;

Result<FfmpegMedia::Entry> FfmpegMedia::take(const std::filesystem::path& file) {
    Entry entry;
    std::error_code failure;
    entry.identity.file = file;
    entry.identity.size = std::filesystem::file_size(file, failure);
    if (!failure)
        entry.identity.changed = std::filesystem::last_write_time(file, failure);
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(open_, [&](const Entry& open) {
            return open.identity.file == file && (failure || !(open.identity == entry.identity));
        });
        const auto found = std::find_if(open_.begin(), open_.end(), [&](const Entry& open) {
            return open.identity == entry.identity;
        });
        if (found != open_.end()) {
            entry = std::move(*found);
            open_.erase(found);
            return entry;
        }
    }
    auto source = MediaSource::open(file);
    if (!source)
        return source.error();
    entry.video = std::make_unique<VideoFile>();
    entry.video->source = std::move(*source);
    return entry;
}

void FfmpegMedia::keep(Entry entry) {
    const std::lock_guard lock(mutex_);
    open_.push_back(std::move(entry));
    if (open_.size() > filesKeptOpen)
        open_.erase(open_.begin());
}

Result<MediaInfo> FfmpegMedia::probe(const std::filesystem::path& file) {
    auto entry = take(file);
    if (!entry)
        return entry.error();
    auto info = entry->video->source->info();
    keep(std::move(*entry));
    return info;
}

Result<FramePlace> FfmpegMedia::framePlace(const std::filesystem::path& file, double seconds) {
    auto entry = take(file);
    if (!entry)
        return entry.error();
    if (!entry->video->source->info().hasVideo)
        return mediaError(MediaFault::noVideo, "the file holds no video");
    auto place = entry->video->framePlace(seconds);
    if (place)
        keep(std::move(*entry));
    return place;
}

Result<ImageBuffer> FfmpegMedia::frame(const std::filesystem::path& file, double seconds) {
    return thumbnail(file, seconds, {1e9, 1e9});
}

Result<ImageBuffer> FfmpegMedia::thumbnail(const std::filesystem::path& file, double seconds,
                                           Size bounds) {
    auto entry = take(file);
    if (!entry)
        return entry.error();
    auto reader = FrameReader::open(*entry->video);
    if (!reader)
        return reader.error();
    const auto frame = (*reader)->at(seconds);
    if (!frame)
        return frame.error();
    const auto& info = entry->video->source->info();
    Size size = fittedInto(info.size, bounds, 1);
    if (info.rotation % 180 != 0)
        std::swap(size.width, size.height);
    auto image = toImage(**frame, size, info.rotation);
    reader->reset();
    keep(std::move(*entry));
    return image;
}

}  // namespace tembrix
