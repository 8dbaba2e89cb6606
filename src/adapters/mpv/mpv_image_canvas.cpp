#include "adapters/mpv/mpv_image_canvas.h"

#include <memory>
#include <mpv/client.h>
#include <mpv/render.h>

namespace tembrix {

namespace {

constexpr std::size_t alignment = 64;  // of rows; libmpv draws faster into aligned rows

QImage placeIn(std::vector<uchar>& bytes, QSize size) {
    const auto stride =
        (static_cast<std::size_t>(size.width()) * 4 + alignment - 1) / alignment * alignment;
    bytes.resize(stride * static_cast<std::size_t>(size.height()) + alignment);
    void* start = bytes.data();
    std::size_t room = bytes.size();
    std::align(alignment, alignment, start, room);
    return {static_cast<uchar*>(start), size.width(), size.height(), static_cast<qsizetype>(stride),
            QImage::Format_RGB32};
}

}  // namespace

bool MpvImageCanvas::prepare(QThread&) {
    return true;
}

mpv_render_context* MpvImageCanvas::open(mpv_handle* core) {
    mpv_render_param parameters[] = {
        {MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(MPV_RENDER_API_TYPE_SW)},
        {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context* context = nullptr;
    return mpv_render_context_create(&context, core, parameters) >= 0 ? context : nullptr;
}

void MpvImageCanvas::draw(mpv_render_context* context, std::size_t picture, QSize size) {
    auto& [bytes, image] = buffers_.at(picture);
    if (image.size() != size)
        image = placeIn(bytes, size);
    int pixels[] = {size.width(), size.height()};
    auto stride = static_cast<std::size_t>(image.bytesPerLine());
    // Four bytes, blue first: the memory layout of a 32-bit image on a little-endian machine.
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_SW_SIZE, pixels},
                                     {MPV_RENDER_PARAM_SW_FORMAT, const_cast<char*>("bgr0")},
                                     {MPV_RENDER_PARAM_SW_STRIDE, &stride},
                                     {MPV_RENDER_PARAM_SW_POINTER, image.bits()},
                                     {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context_render(context, parameters);
}

void MpvImageCanvas::close(mpv_render_context* context) {
    if (context)
        mpv_render_context_free(context);
}

MpvPicture MpvImageCanvas::picture(std::size_t picture) const {
    const QImage& image = buffers_.at(picture).image;
    return {image.size(), 0, &image};
}

}  // namespace tembrix
