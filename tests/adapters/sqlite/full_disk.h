#pragma once

#include <csignal>
#include <sys/resource.h>

namespace tembrix {

// No file may grow beyond `size` bytes while it lives, as on a full disk.
class FullDisk {
  public:
    explicit FullDisk(rlim_t size) {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = size;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    rlimit before_{};
};

}  // namespace tembrix
