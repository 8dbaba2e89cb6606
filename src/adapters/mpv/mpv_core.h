#pragma once

#include <QObject>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

struct mpv_event;
struct mpv_handle;

namespace tembrix {

// One libmpv core, configured for this program: no configuration files, no keys, no on-screen
// display, exact seeks, sound on any available device. No call waits for the core: commands and
// properties are asynchronous, and events are delivered on the main thread.
class MpvCore final : public QObject {
    Q_OBJECT
  public:
    // The handler may destroy the core.
    explicit MpvCore(std::function<void(const mpv_event&)> handler);
    ~MpvCore() override;

    bool works() const { return handle_ != nullptr; }
    mpv_handle* handle() const { return handle_; }

    // Replies have `id` as their user data.
    void command(std::uint64_t id, std::initializer_list<std::string> words);
    void set(const char* property, bool value, std::uint64_t id = 0);
    void set(const char* property, double value);
    void set(const char* property, const char* value);
    void request(std::uint64_t id, const char* property, int format);
    void observe(std::uint64_t id, const char* property, int format);

  private:
    static void wake(void* core);
    Q_INVOKABLE void drain();

    std::shared_ptr<std::function<void(const mpv_event&)>> handler_;
    mpv_handle* handle_ = nullptr;
};

}  // namespace tembrix
