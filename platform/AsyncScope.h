#pragma once

#include <functional>
#include <memory>

// Bounds the life of calls on other threads by the life of their receiver, which has a scope as its last
// member, so that it goes first; a class with subclasses that have members of their own closes it in theirs.
// A call that has not begun when the scope closes never begins; closing waits for those in progress. So a
// call must not wait for the thread that deletes its receiver (the main thread, as a rule), nor delete its
// receiver: it takes values, works on them, and hands interface work back in a queued call.
class AsyncScope
{
public:
    AsyncScope();
    ~AsyncScope() { close(); }
    AsyncScope(const AsyncScope &) = delete;
    AsyncScope &operator=(const AsyncScope &) = delete;

    // Runs the call on a new thread of its own; several run at once and in any order. Where no thread can be
    // had the call is dropped, and the answer is false. The process ends, and the module is unloaded, after
    // its last thread. What the call carries goes with it, at the latest when its thread ends: it must not
    // own the receiver.
    bool spawn(std::function<void()> call);

    // Lets no call begin any more and waits for those in progress. For a receiver whose destructor has work
    // of its own to do: it closes first.
    void close();

private:
    struct State;
    std::shared_ptr<State> m_state;
};

// Something that is called on other threads as long as its scope is open.
class AsyncReceiver
{
public:
    virtual AsyncScope &asyncScope() = 0;

protected:
    ~AsyncReceiver() = default;
};
