#include "platform/AsyncScope.h"

#include <atomic>
#include <chrono>
#include <future>
#include <shared_mutex>
#include <vector>

namespace
{
// Threads that may still run. A thread is of no use to anybody once its call is over, but nothing that it
// uses, this code included, may go before it has wholly ended: the next thread and the end of the process
// join it.
class Threads
{
public:
    void start(std::function<void()> body)
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_threads, [](const std::future<void> &thread) {
            return thread.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        });
        m_threads.push_back(std::async(std::launch::async, std::move(body)));
    }

private:
    std::mutex m_mutex;
    std::vector<std::future<void>> m_threads; // each joins its thread when it goes
};
} // namespace

// Calls share the lock, so that they run at once; closing takes it alone.
struct AsyncScope::State {
    std::shared_mutex mutex;
    std::atomic<bool> isOpen = true;
};

AsyncScope::AsyncScope()
    : m_state(std::make_shared<State>())
{
}

bool AsyncScope::spawn(std::function<void()> call)
{
    static Threads threads;
    if (!m_state->isOpen || !call)
        return false;
    // An exception of the call's own ends the program, as on any thread: nobody is there to catch it.
    auto run = [state = m_state, call = std::move(call)]() mutable noexcept {
        const std::shared_lock lock(state->mutex);
        if (state->isOpen)
            call();
        call = nullptr; // with all that it carries: a thread may be joined much later
    };
    try {
        threads.start(std::move(run));
    } catch (const std::exception &) {
        return false;
    }
    return true;
}

void AsyncScope::close()
{
    m_state->isOpen = false;
    const std::unique_lock lock(m_state->mutex);
}
