#include "adapters/mpv/quiet_libraries.h"

#include <QLoggingCategory>
#include <QString>
#include <array>
#include <utility>
#ifdef __linux__
#include <dlfcn.h>
#endif

#include "base/library_messages.h"

namespace tembrix {

namespace {

// Environment variables that the libraries read when they are loaded. Values set by the user are
// kept.
constexpr std::array settings{
    std::pair{"LIBGL_DEBUG", "quiet"},   std::pair{"MESA_DEBUG", "silent"},
    std::pair{"EGL_LOG_LEVEL", "fatal"}, std::pair{"LIBVA_MESSAGING_LEVEL", "0"},
    std::pair{"VDPAU_LOG", "0"},         std::pair{"PIPEWIRE_DEBUG", "0"},
    std::pair{"PULSE_LOG", "0"},
};

#ifdef __linux__
void ignoreMessage(const char*, int, const char*, int, const char*, ...) {}

// libmpv loads ALSA, which prints each device that it does not find.
void silenceAlsa() {
    using Handler = void (*)(const char*, int, const char*, int, const char*, ...);
    using SetHandler = int (*)(Handler);
    if (void* symbol = dlsym(RTLD_DEFAULT, "snd_lib_error_set_handler"))
        reinterpret_cast<SetHandler>(symbol)(&ignoreMessage);
}
#endif

}  // namespace

void silenceLibraries() {
    if (wantsLibraryMessages())
        return;
    for (const auto& [name, value] : settings)
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
    if (!qEnvironmentVariableIsSet("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules(
            QStringLiteral("*.debug=false\n*.info=false\nqt.*.warning=false"));
#ifdef __linux__
    silenceAlsa();
#endif
}

}  // namespace tembrix
