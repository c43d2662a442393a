#include "qt/fiber_p.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include <cxxabi.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define VANTREL_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VANTREL_ADDRESS_SANITIZER
#endif
#endif

#ifdef VANTREL_ADDRESS_SANITIZER
#include <sanitizer/common_interface_defs.h>
#endif

namespace Vantrel::QtWrapper {

namespace {

// As large as the stack of a main thread usually is; pages count when they are used.
constexpr std::size_t stackSize = 8 * 1024 * 1024;

/** Memory for a stack, whose lowest page is out of bounds. */
class Stack
{
public:
    Stack() : m_guardSize(std::size_t(sysconf(_SC_PAGESIZE)))
    {
        void *memory = mmap(nullptr, m_guardSize + stackSize, PROT_NONE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
        if (memory == MAP_FAILED) {
            return;
        }
        m_memory = static_cast<char *>(memory);
        if (mprotect(bottom(), stackSize, PROT_READ | PROT_WRITE) != 0) {
            release();
        }
    }
    ~Stack() { release(); }

    bool isValid() const { return m_memory; }
    char *bottom() const { return m_memory + m_guardSize; }

private:
    Q_DISABLE_COPY(Stack)
    void release()
    {
        if (m_memory) {
            munmap(m_memory, m_guardSize + stackSize);
            m_memory = nullptr;
        }
    }

    std::size_t m_guardSize;
    char *m_memory = nullptr;
};

/**
 * What the C++ runtime knows about exceptions that are being handled. It keeps
 * that for each thread, but a handler belongs to a stack. The size is that of
 * the Itanium ABI: a pointer and a counter.
 */
struct ExceptionState
{
    void *caught = nullptr;
    unsigned int numUncaught = 0;
};

void exchangeExceptions(ExceptionState *state)
{
    ExceptionState other;
    void *globals = abi::__cxa_get_globals();
    std::memcpy(&other, globals, sizeof(other));
    std::memcpy(globals, state, sizeof(other));
    *state = other;
}

// The address sanitizer must know which stack is in use. It keeps locals of
// each stack elsewhere and hands out a token for them while the other one runs.

void announceSwitch([[maybe_unused]] void **token, [[maybe_unused]] const void *bottom,
                    [[maybe_unused]] std::size_t size)
{
#ifdef VANTREL_ADDRESS_SANITIZER
    __sanitizer_start_switch_fiber(token, bottom, size);
#endif
}

void concludeSwitch([[maybe_unused]] void *token, [[maybe_unused]] const void **oldBottom,
                    [[maybe_unused]] std::size_t *oldSize)
{
#ifdef VANTREL_ADDRESS_SANITIZER
    __sanitizer_finish_switch_fiber(token, oldBottom, oldSize);
#endif
}

} // namespace

struct Fiber::Private
{
    explicit Private(std::function<void()> function) : entry(std::move(function)) {}

    static void enter(unsigned int high, unsigned int low);
    void prepare();

    std::function<void()> entry;
    Stack stack;
    ucontext_t inside{};
    ucontext_t outside{};
    ExceptionState exceptions;
    const void *outerBottom = nullptr;
    std::size_t outerSize = 0;
    bool running = false;
    bool ended = false;
};

void Fiber::Private::enter(unsigned int high, unsigned int low)
{
    auto *d = reinterpret_cast<Private *>(quintptr(quint64(high) << 32 | low));
    concludeSwitch(nullptr, &d->outerBottom, &d->outerSize);
    d->entry();
    d->ended = true;
    // Without a place for the token the sanitizer frees what belongs to this stack.
    announceSwitch(nullptr, d->outerBottom, d->outerSize);
    setcontext(&d->outside);
}

void Fiber::Private::prepare()
{
    getcontext(&inside);
    inside.uc_stack.ss_sp = stack.bottom();
    inside.uc_stack.ss_size = stackSize;
    // Arguments can only be numbers of the size of an int.
    const quint64 self = quintptr(this);
    makecontext(&inside, reinterpret_cast<void (*)()>(&Private::enter), 2, unsigned(self >> 32),
                unsigned(self & 0xffffffffu));
}

Fiber::Fiber(std::function<void()> entry) : d(new Private(std::move(entry)))
{
    if (d->stack.isValid()) {
        d->prepare();
    }
}

Fiber::~Fiber() = default;

bool Fiber::isUsable() const
{
    return d->stack.isValid();
}

void Fiber::resume()
{
    Q_ASSERT(!d->running && !d->ended && isUsable());
    void *token = nullptr;
    d->running = true;
    exchangeExceptions(&d->exceptions);
    announceSwitch(&token, d->stack.bottom(), stackSize);
    swapcontext(&d->outside, &d->inside);
    concludeSwitch(token, nullptr, nullptr);
    exchangeExceptions(&d->exceptions);
    d->running = false;
}

void Fiber::suspend()
{
    Q_ASSERT(d->running);
    void *token = nullptr;
    announceSwitch(&token, d->outerBottom, d->outerSize);
    swapcontext(&d->inside, &d->outside);
    concludeSwitch(token, &d->outerBottom, &d->outerSize);
}

bool Fiber::isRunning() const
{
    return d->running;
}

bool Fiber::hasEnded() const
{
    return d->ended;
}

} // namespace Vantrel::QtWrapper
