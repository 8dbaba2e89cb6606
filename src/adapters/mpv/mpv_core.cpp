#include "adapters/mpv/mpv_core.h"

#include <QMetaObject>
#include <QPointer>
#include <array>
#include <clocale>
#if defined(__linux__) && defined(__x86_64__)
#include <dlfcn.h>
#endif
#include <mpv/client.h>
#include <utility>
#include <vector>

#include "base/library_messages.h"

namespace tembrix {

namespace {

using Option = std::pair<const char*, const char*>;

constexpr std::array options{
    Option{"vo", "libmpv"},
    Option{"config", "no"},
    Option{"terminal", "no"},
    Option{"load-scripts", "no"},
    Option{"ytdl", "no"},
    Option{"osc", "no"},
    Option{"osd-level", "0"},
    Option{"input-default-bindings", "no"},
    Option{"input-vo-keyboard", "no"},
    Option{"input-media-keys", "no"},
    // Only the file itself is opened, not other files next to it or referenced by it.
    Option{"autoload-files", "no"},
    Option{"access-references", "no"},
    Option{"sid", "no"},
    Option{"audio-display", "no"},
    // The last frame is kept on screen, and times are those of the container.
    Option{"keep-open", "yes"},
    Option{"idle", "yes"},
    Option{"pause", "yes"},
    Option{"rebase-start-time", "no"},
    Option{"hr-seek", "yes"},
    Option{"hwdec", "auto-safe"},
    // Without a sound device, playback keeps the right speed.
    Option{"audio-fallback-to-null", "yes"},
#ifdef __linux__
    Option{"ao", "pipewire,pulse,alsa,"},
#endif
    Option{"audio-client-name", "Tembrix Stat"},
    // The file is local, so few packets are kept in memory.
    Option{"demuxer-max-bytes", "32MiB"},
    Option{"demuxer-max-back-bytes", "8MiB"},
};

// The core tries all decoders of graphics cards. Without a CUDA driver, the attempts for its cards,
// by CUDA and by VDPAU, only print messages to the terminal.
void skipAbsentDecoders([[maybe_unused]] mpv_handle* handle) {
#if defined(__linux__) && defined(__x86_64__)
    if (void* driver = dlopen("libcuda.so.1", RTLD_LAZY)) {
        dlclose(driver);
        return;
    }
    mpv_set_option_string(handle, "hwdec", "vaapi");
    for (const char* name : {"vaapi", "vaapi-egl"})
        if (mpv_set_option_string(handle, "gpu-hwdec-interop", name) >= 0)
            return;
#endif
}

}  // namespace

MpvCore::MpvCore(std::function<void(const mpv_event&)> handler)
    : handler_(std::make_shared<std::function<void(const mpv_event&)>>(std::move(handler))) {
    std::setlocale(LC_NUMERIC, "C");  // required by libmpv; Qt sets the user's locale
    mpv_handle* handle = mpv_create();
    if (!handle)
        return;
    // Errors are ignored, because an option may be missing in this build of the library.
    for (const auto& [name, value] : options)
        mpv_set_option_string(handle, name, value);
    if (wantsLibraryMessages())
        mpv_set_option_string(handle, "terminal", "yes");
    else
        skipAbsentDecoders(handle);
    if (mpv_initialize(handle) < 0) {
        mpv_terminate_destroy(handle);
        return;
    }
    handle_ = handle;
    mpv_set_wakeup_callback(handle_, &MpvCore::wake, this);
}

MpvCore::~MpvCore() {
    if (!handle_)
        return;
    mpv_set_wakeup_callback(handle_, nullptr, nullptr);
    mpv_terminate_destroy(handle_);
}

void MpvCore::command(std::uint64_t id, std::initializer_list<std::string> words) {
    std::vector<const char*> arguments;
    for (const auto& word : words)
        arguments.push_back(word.c_str());
    arguments.push_back(nullptr);
    mpv_command_async(handle_, id, arguments.data());
}

void MpvCore::set(const char* property, bool value, std::uint64_t id) {
    int flag = value ? 1 : 0;
    mpv_set_property_async(handle_, id, property, MPV_FORMAT_FLAG, &flag);
}

void MpvCore::set(const char* property, double value) {
    mpv_set_property_async(handle_, 0, property, MPV_FORMAT_DOUBLE, &value);
}

void MpvCore::set(const char* property, const char* value) {
    mpv_set_property_async(handle_, 0, property, MPV_FORMAT_STRING, &value);
}

void MpvCore::request(std::uint64_t id, const char* property, int format) {
    mpv_get_property_async(handle_, id, property, static_cast<mpv_format>(format));
}

void MpvCore::observe(std::uint64_t id, const char* property, int format) {
    mpv_observe_property(handle_, id, property, static_cast<mpv_format>(format));
}

void MpvCore::wake(void* core) {
    QMetaObject::invokeMethod(static_cast<MpvCore*>(core), "drain", Qt::QueuedConnection);
}

void MpvCore::drain() {
    const QPointer<MpvCore> self(this);
    const auto handler = handler_;
    while (self) {
        const mpv_event* event = mpv_wait_event(handle_, 0);
        if (event->event_id == MPV_EVENT_NONE)
            return;
        (*handler)(*event);
    }
}

}  // namespace tembrix
