#include "NorvikCore/platform/kernel/FatalSignals.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <iterator>

namespace norvik::kernel {
namespace {

constexpr int watched[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr std::size_t mostFrames = 64, alternateStackSize = 512 << 10;
constexpr std::int64_t second = 1'000'000'000;

struct Words {
  int number, code;
  const char* reason;
};
constexpr Words knownReasons[] = {
    {SIGSEGV, SEGV_MAPERR, "no memory at"},
    {SIGSEGV, SEGV_ACCERR, "no access to"},
    {SIGBUS, BUS_ADRALN, "unaligned access to"},
    {SIGBUS, BUS_ADRERR, "nothing behind the memory at"},
    {SIGBUS, BUS_OBJERR, "hardware error at"},
    {SIGFPE, FPE_INTDIV, "integer division by zero at"},
    {SIGFPE, FPE_INTOVF, "integer overflow at"},
    {SIGFPE, FPE_FLTDIV, "division by zero at"},
    {SIGFPE, FPE_FLTOVF, "overflow at"},
    {SIGFPE, FPE_FLTINV, "invalid operation at"},
    {SIGILL, ILL_ILLOPC, "illegal instruction at"},
    {SIGILL, ILL_ILLOPN, "illegal instruction at"},
    {SIGILL, ILL_PRVOPC, "privileged instruction at"},
};

const char* nameOf(int number) noexcept {
  switch (number) {
    case SIGSEGV:
      return "SIGSEGV";
    case SIGBUS:
      return "SIGBUS";
    case SIGFPE:
      return "SIGFPE";
    case SIGILL:
      return "SIGILL";
    default:
      return "SIGABRT";
  }
}

// All memory that the handler uses is here, because it must not allocate.

constinit std::atomic<bool> isWatching{false};
std::span<const FatalStep> steps;
std::int64_t patience = 0;
struct sigaction former[std::size(watched)];

constinit std::atomic<std::uint32_t> reporter{0};  // the thread that runs the steps, or has run them
constinit std::atomic<std::uint32_t> reporterProcess{0};
constinit std::atomic<std::uint32_t> finished{0};
constinit std::atomic<std::int64_t> deadline{0};

FatalSignal current;
std::uintptr_t frames[mostFrames];
std::size_t frameCount = 0;
std::uintptr_t firstFrame = 0;  // earlier frames belong to the handler itself
bool isFirstFound = false;

// Used only by the reporter.
sigjmp_buf afterStep, afterAll;
volatile bool isInStep = false, isRunning = false;
volatile std::size_t nextStep = 0;
char timerMark;

std::uint32_t threadId() noexcept { return static_cast<std::uint32_t>(gettid()); }

// The stack

_Unwind_Reason_Code noteFrame(_Unwind_Context* context, void*) {
  int isBefore = 0;
  const auto address = static_cast<std::uintptr_t>(_Unwind_GetIPInfo(context, &isBefore));
  if (address == 0) return _URC_END_OF_STACK;
  if (!isFirstFound && address != firstFrame) return _URC_NO_REASON;
  isFirstFound = true;
  frames[frameCount++] = address;
  return frameCount == mostFrames ? _URC_END_OF_STACK : _URC_NO_REASON;
}

struct Registers {
  bool isKnown = false;
  std::uintptr_t counter = 0, stack = 0;
};

Registers registersOf(const void* context) noexcept {
  const auto& machine = static_cast<const ucontext_t*>(context)->uc_mcontext;
#if defined(__x86_64__)
  return {true, static_cast<std::uintptr_t>(machine.gregs[REG_RIP]),
          static_cast<std::uintptr_t>(machine.gregs[REG_RSP])};
#elif defined(__aarch64__)
  return {true, machine.pc, machine.sp};
#else
  (void)machine;
  return {};
#endif
}

Registers crashed;

void walkStack(const FatalSignal&) {
  frameCount = 0;
  firstFrame = crashed.counter;
  isFirstFound = !crashed.isKnown;
  _Unwind_Backtrace(&noteFrame, nullptr);
  if (isFirstFound) return;
  frames[frameCount++] = crashed.counter;
#if defined(__x86_64__)
  // For a call of an address that is no code: the caller's address is on the stack. Reading it may crash, which ends
  // only this step.
  if (crashed.stack != 0) frames[frameCount++] = *reinterpret_cast<const std::uintptr_t*>(crashed.stack);
#endif
}

// Steps

/// After a crash in the step, execution continues behind it.
void runStep(FatalStep step) {
  if (sigsetjmp(afterStep, 1) == 0) {
    isInStep = true;
    step(current);
  }
  isInStep = false;
}

/// Ends the steps when the time is over, even if this thread is waiting for something.
class Timer {
 public:
  explicit Timer(std::int64_t when) noexcept {
    sigevent event{};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = SIGABRT;
    event.sigev_value.sival_ptr = &timerMark;
    event._sigev_un._tid = gettid();
    if (syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &id_) != 0) return;
    isSet_ = true;
    itimerspec time{};
    time.it_value.tv_sec = static_cast<time_t>(when / second);
    time.it_value.tv_nsec = static_cast<long>(when % second);
    syscall(SYS_timer_settime, id_, TIMER_ABSTIME, &time, nullptr);
  }
  ~Timer() {
    if (isSet_) syscall(SYS_timer_delete, id_);
  }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

 private:
  int id_ = 0;
  bool isSet_ = false;
};

/// Unblocks the timer's signal, and the signals of a crash in a step.
void letThrough() noexcept {
  sigset_t all;
  sigemptyset(&all);
  for (const int number : watched) sigaddset(&all, number);
  pthread_sigmask(SIG_UNBLOCK, &all, nullptr);
}

void runAllSteps() {
  letThrough();
  const Timer timer(deadline.load());
  if (sigsetjmp(afterAll, 1) == 0) {
    isRunning = true;
    runStep(&walkStack);
    current.stack = {frames, frameCount};
    for (nextStep = 0; nextStep < steps.size();) {
      const std::size_t step = nextStep;
      nextStep = step + 1;
      runStep(steps[step]);
    }
  }
  isRunning = false;
}

/// True if this thread must run the steps.
bool becomeReporter(std::uint32_t self) noexcept {
  if (const std::uint32_t process = forkGeneration(); reporterProcess.exchange(process) != process) {
    reporter = 0;
    finished = 0;
  }
  std::uint32_t nobody = 0;
  if (!reporter.compare_exchange_strong(nobody, self)) return false;
  deadline = monotonicNanoseconds() + patience;
  return true;
}

void finish() noexcept {
  finished = 1;
  norvik::detail::futexWake(&finished, INT_MAX);
}

void waitForReporter() noexcept {
  constexpr std::int64_t look = second / 100;
  for (;;) {
    const std::int64_t until = deadline.load(), now = monotonicNanoseconds();
    if (finished.load() != 0 || (until != 0 && now > until + 10 * look)) return;
    (void)norvik::detail::futexWait(finished, 0, static_cast<std::uint64_t>(now + look));
  }
}

void describe(int number, const siginfo_t& info) noexcept {
  current = {};
  current.number = number;
  current.name = nameOf(number);
  current.threadId = threadId();
  if (info.si_code <= 0) {
    current.sender = info.si_pid == getpid() ? 0 : info.si_pid;
    return;
  }
  for (const Words& words : knownReasons) {
    if (words.number != number || words.code != info.si_code) continue;
    current.reason = words.reason;
    current.hasAddress = true;
    current.address = reinterpret_cast<std::uintptr_t>(info.si_addr);
  }
}

/// The signal is blocked until the handler returns, and is then delivered as if for the first time.
void passOn(int number, siginfo_t& info) noexcept {
  for (std::size_t i = 0; i < std::size(watched); ++i) {
    if (watched[i] == number) sigaction(number, &former[i], nullptr);
  }
  sigset_t own;
  sigemptyset(&own);
  sigaddset(&own, number);
  pthread_sigmask(SIG_BLOCK, &own, nullptr);
  syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), number, &info);
}

void handle(int number, siginfo_t* info, void* context) {
  const int savedErrno = errno;
  const std::uint32_t self = threadId();
  if (info->si_code == SI_TIMER && info->si_value.sival_ptr == &timerMark) {
    if (reporter == self && isRunning) siglongjmp(afterAll, 1);
    return;
  }
  if (becomeReporter(self)) {
    describe(number, *info);
    crashed = registersOf(context);
    runAllSteps();
    finish();
  } else if (reporter != self) {
    waitForReporter();
  } else if (isRunning && isInStep) {
    isInStep = false;
    siglongjmp(afterStep, 1);
  }
  passOn(number, *info);
  errno = savedErrno;
}

// Alternate stacks

thread_local constinit bool isCovered __attribute__((tls_model("initial-exec"))) = false;

void endCover(void* memory) {
  stack_t present{};
  const bool isOwn = sigaltstack(nullptr, &present) == 0 && present.ss_sp > memory &&
                     present.ss_sp < static_cast<char*>(memory) + alternateStackSize;
  if (isOwn) {
    stack_t none{};
    none.ss_flags = SS_DISABLE;
    sigaltstack(&none, nullptr);
  }
  munmap(memory, alternateStackSize);
  isCovered = false;
}

struct Key {
  pthread_key_t key{};
  bool isMade = pthread_key_create(&key, &endCover) == 0;
};

Key& coverKey() {
  return madeOnce([] { return new Key; });
}

void coverThisThread() noexcept {
  isCovered = true;
  stack_t present{};
  if (sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0) return;
  const Key& key = coverKey();
  const std::size_t guard = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  void* const memory = mmap(nullptr, alternateStackSize, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED) return;
  stack_t own{};
  own.ss_sp = static_cast<char*>(memory) + guard;
  own.ss_size = alternateStackSize - guard;
  const bool isSet = mprotect(memory, guard, PROT_NONE) == 0 && key.isMade &&
                     pthread_setspecific(key.key, memory) == 0 && sigaltstack(&own, nullptr) == 0;
  if (isSet) return;
  if (key.isMade) pthread_setspecific(key.key, nullptr);
  munmap(memory, alternateStackSize);
}

struct Watching {};

}  // namespace

void coverThread() noexcept {
  if (isCovered || !isWatching.load(std::memory_order_relaxed)) [[likely]]
    return;
  coverThisThread();
}

void watchFatalSignals(std::span<const FatalStep> given, std::int64_t patienceNanoseconds) {
  (void)madeOnce([&] {
    steps = given;
    patience = patienceNanoseconds;
    reporterProcess = forkGeneration();
    walkStack({});  // so that the unwinder prepares what it needs at its first use
    (void)coverKey();
    struct sigaction own {};
    own.sa_sigaction = &handle;
    own.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigfillset(&own.sa_mask);
    for (const int number : watched) sigdelset(&own.sa_mask, number);
    for (std::size_t i = 0; i < std::size(watched); ++i) sigaction(watched[i], &own, &former[i]);
    isWatching = true;
    return new Watching;
  });
  coverThread();
}

[[gnu::noinline]] void runFatalSteps(int number) {
  if (!isWatching) return;
  if (!becomeReporter(threadId())) {
    if (reporter != threadId()) waitForReporter();
    return;
  }
  const siginfo_t none{};
  describe(number, none);
  current.sender = 0;
  current.isTerminate = true;
  crashed = {true, reinterpret_cast<std::uintptr_t>(__builtin_return_address(0)), 0};
  runAllSteps();
  finish();
}

}  // namespace norvik::kernel
