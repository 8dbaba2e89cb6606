// How fast this machine is now: a fixed piece of pure computation and one of memory, of which
// nothing changes with the program. Printed beside the other figures, so that those of two days or
// two machines can be compared. Milliseconds of the median of some runs, and for how much of that
// time this thread had a processor: less than all means that other programs were running.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "bench_user.h"

namespace {

constexpr std::size_t runs = 7;

double processorMs() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// Integers and real numbers, each from the one before, within the registers.
double compute() {
    std::uint64_t bits = 1;
    double sum = 0;
    for (int i = 0; i < 16'000'000; ++i) {
        bits ^= bits >> 12;
        bits ^= bits << 25;
        bits ^= bits >> 27;
        bits *= 0x2545F4914F6CDD1D;
        sum = std::sqrt(sum + static_cast<double>(bits >> 40));
    }
    return sum;
}

// Steps from place to place in an order that no cache foresees, and copies of the whole.
class Memory {
  public:
    Memory() : next_(places), copy_(places) {
        std::vector<std::uint32_t> order(places);
        std::iota(order.begin(), order.end(), 0U);
        std::shuffle(order.begin(), order.end(), std::mt19937(1));
        for (std::size_t i = 0; i < places; ++i)
            next_[order[i]] = order[(i + 1) % places];
    }
    double visit() {
        std::uint32_t at = 0;
        for (int i = 0; i < 1'000'000; ++i)
            at = next_[at];
        for (int i = 0; i < 4; ++i) {
            std::copy(next_.begin(), next_.end(), copy_.begin());
            std::swap(next_, copy_);
        }
        return static_cast<double>(at + next_[at]);
    }

  private:
    static constexpr std::size_t places = 16'000'000;  // 64 MB
    std::vector<std::uint32_t> next_;
    std::vector<std::uint32_t> copy_;
};

void measure(const char* what, const std::function<double()>& work) {
    std::array<double, runs> wall{};
    double result = 0;
    double allWall = 0;
    double allProcessor = 0;
    for (double& time : wall) {
        const double processor = processorMs();
        const double start = tembrix::nowMs();
        result += work();
        time = tembrix::nowMs() - start;
        allWall += time;
        allProcessor += processorMs() - processor;
    }
    std::sort(wall.begin(), wall.end());
    std::printf("%-12s %7.1f ms, %5.1f %% of a processor (%.0f)\n", what, wall[runs / 2],
                100 * allProcessor / allWall, result);
}

}  // namespace

int main() {
    measure("computation", compute);
    Memory memory;
    measure("memory", [&] { return memory.visit(); });
}
