#include "adapters/ffmpeg/film_pictures.h"

#include <algorithm>
#include <fmt/format.h>
#include <thread>

#include "base/image.h"

#include "adapters/ffmpeg/media_source.h"

namespace tembrix {

namespace {

// How far a cut may extend beyond the last frame, because times are rounded.
constexpr double overhang = 0.5;

int evenSize(double pixels) {
    return std::max(2, static_cast<int>(pixels) / 2 * 2);
}

FrameHandle sameFrame(const AVFrame& frame) {
    auto same = newFrame();
    av_frame_ref(same.get(), &frame);
    return same;
}

}  // namespace

Result<std::unique_ptr<FilmPictures>> FilmPictures::open(const MovieJob& job, const FilmPlan& plan,
                                                         const std::atomic<bool>& stop) {
    std::unique_ptr<FilmPictures> pictures(new FilmPictures(job, plan));
    auto source = MediaSource::open(job.source, MediaSource::Streams::video, &stop);
    if (!source)
        return source.error();
    pictures->file_.source = std::move(*source);
    // The encoder needs most of the processor; decoding only has to keep up with it.
    const int threads = static_cast<int>(std::thread::hardware_concurrency() / 2 + 1);
    auto reader = FrameReader::open(pictures->file_, threads);
    if (!reader)
        return reader.error();
    pictures->reader_ = std::move(*reader);
    const auto& coded = *pictures->file_.source->stream()->codecpar;
    pictures->canvas_ = std::make_unique<FilmCanvas>(
        evenSize(job.renderSize.width), evenSize(job.renderSize.height),
        colorMatrix(coded.color_space, coded.width, coded.height));
    pictures->blends_.resize(job.overlays.size());
    return pictures;
}

FilmFormat FilmPictures::format() const {
    FilmFormat format;
    format.width = canvas_->width();
    format.height = canvas_->height();
    format.matrix = canvas_->matrix();
    const auto& coded = *file_.source->stream()->codecpar;
    const bool standard = format.matrix == AVCOL_SPC_SMPTE170M;
    format.primaries = coded.color_primaries != AVCOL_PRI_UNSPECIFIED ? coded.color_primaries
                       : standard                                     ? AVCOL_PRI_SMPTE170M
                                                                      : AVCOL_PRI_BT709;
    format.transfer = coded.color_trc != AVCOL_TRC_UNSPECIFIED ? coded.color_trc
                      : standard                               ? AVCOL_TRC_SMPTE170M
                                                               : AVCOL_TRC_BT709;
    return format;
}

const OverlayBlend& FilmPictures::blend(std::size_t overlay) {
    auto& kept = blends_[overlay];
    if (!kept) {
        auto shown = job_.overlays[overlay];
        if (shown.image.empty() && shown.paint)
            shown.image = shown.paint();
        kept = std::make_unique<OverlayBlend>(shown, canvas_->width(), canvas_->height(),
                                              canvas_->matrix());
    }
    return *kept;
}

Result<FrameHandle> FilmPictures::base(std::size_t piece) {
    const auto& content = job_.pieces[piece];
    if (const auto* still = std::get_if<StillPiece>(&content)) {
        if (std::exchange(shownPiece_, piece) == piece)
            return FrameHandle();
        if (!still->image.empty())
            return canvas_->fit(still->image);
        const ImageBuffer loaded = still->load ? still->load() : ImageBuffer();
        return canvas_->fit(loaded.empty() ? ImageBuffer(2, 2) : loaded);
    }
    const auto& info = file_.source->info();
    const double time = plan_.sourceTime(piece, frame_);
    if (time > info.duration + overhang)
        return mediaError(MediaFault::unreadable,
                          fmt::format("the video can be read up to {:.1f} seconds only, and a cut "
                                      "needs {:.1f}",
                                      info.duration, time));
    const auto frame = reader_->at(time);
    if (!frame)
        return frame.error();
    const bool same = shownPiece_ == piece && shownStart_ == reader_->start();
    shownPiece_ = piece;
    shownStart_ = reader_->start();
    if (same)
        return FrameHandle();
    return canvas_->fit(**frame, info.size, info.rotation);
}

Result<FrameHandle> FilmPictures::next() {
    auto picture = base(plan_.pieceAt(frame_));
    if (!picture)
        return picture.error();
    auto overlays = plan_.overlaysAt(frame_);
    // An overlay that has ended is not needed again, and uses much memory.
    for (const auto over : shownOverlays_)
        if (std::find(overlays.begin(), overlays.end(), over) == overlays.end())
            blends_[over].reset();
    const bool changed = *picture || overlays != shownOverlays_;
    if (*picture)
        plain_ = std::move(*picture);
    shownOverlays_ = std::move(overlays);
    ++frame_;
    if (changed) {
        composed_ = shownOverlays_.empty() ? sameFrame(*plain_) : canvas_->copy(*plain_);
        for (const auto overlay : shownOverlays_)
            blend(overlay).apply(*composed_);
    }
    return sameFrame(*composed_);
}

}  // namespace tembrix
