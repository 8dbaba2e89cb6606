#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>
#include <string_view>

#include "base/result.h"

namespace tembrix {

// Smart pointers to objects of the FFmpeg libraries. Each object is freed by its own function.
template <auto free>
struct FreeByAddress {
    template <class T>
    void operator()(T* p) const {
        free(&p);
    }
};
struct FreeSws {
    void operator()(SwsContext* p) const { sws_freeContext(p); }
};

using FormatHandle = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using CodecHandle = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using FrameHandle = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using PacketHandle = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using ResampleHandle = std::unique_ptr<SwrContext, FreeByAddress<swr_free>>;
using ScaleHandle = std::unique_ptr<SwsContext, FreeSws>;

inline FrameHandle newFrame() {
    return FrameHandle(av_frame_alloc());
}
inline PacketHandle newPacket() {
    return PacketHandle(av_packet_alloc());
}

// The text for a negative return value of an FFmpeg function.
inline std::string avText(int code) {
    if (code == AVERROR_INVALIDDATA)
        return "the file is damaged or not a video";
    if (code == AVERROR_EOF)
        return "the file ends early";
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

// The codes of errors of the domain "media".
enum class MediaFault { cannotOpen = 1, noVideo = 2, unreadable = 3, undecodable = 4 };

inline Error mediaError(MediaFault fault, std::string text) {
    return {"media", static_cast<int>(fault), std::move(text)};
}

}  // namespace tembrix
