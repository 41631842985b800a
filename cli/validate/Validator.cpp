#include "Validator.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "Harness.h"

#if defined(__x86_64__) || defined(__i386__)
#include <xmmintrin.h>
#endif

namespace afv {

const char* checkName(Check check) {
    switch (check) {
        case Check::Lifecycle: return "lifecycle";
        case Check::Parameters: return "parameters";
        case Check::Audio: return "audio";
        case Check::Finite: return "finite";
        case Check::Denormals: return "denormals";
        case Check::Determinism: return "determinism";
        case Check::Timing: return "timing";
        case Check::Allocation: return "allocation";
        case Check::Create: return "create";
    }
    return "?";
}

namespace {

using detail::Outcome;

// Subnormals must be seen as they are: no flush-to-zero, no denormals-are-zero.
void keepSubnormals() {
#if defined(__x86_64__) || defined(__i386__)
    constexpr unsigned kFlushToZero = 0x8000;
    constexpr unsigned kDenormalsAreZero = 0x0040;
    _mm_setcsr(_mm_getcsr() & ~(kFlushToZero | kDenormalsAreZero));
#endif
}

CheckResult resultOf(const std::string& effect, Check check, const Outcome& outcome) {
    CheckResult result;
    result.effect = effect;
    result.check = check;
    result.passed = outcome.passed;
    result.detail = outcome.detail;
    result.documented = outcome.documented;
    return result;
}

void appendEffect(std::vector<CheckResult>& results, const std::string& effect, const std::vector<Outcome>& outcomes) {
    std::size_t k = 0;
    for (Check check : kAllChecks) {
        if (check == Check::Allocation) continue;
        results.push_back(resultOf(effect, check, outcomes[k++]));
    }
    results.push_back(detail::allocationResult(effect, outcomes));
}

// ---- A child's result travels through shared memory ----------------------------

constexpr std::size_t kNoteBytes = 1024;
constexpr std::size_t kResultBytes = 60000;
constexpr char kField = '\x1f';
constexpr char kItem = '\x1e';

struct SharedBlock {
    char crashNote[kNoteBytes];
    volatile int done;
    char result[kResultBytes];
};

std::string serialize(const Outcome& outcome) {
    std::string text;
    text += outcome.passed ? '1' : '0';
    text += kField + outcome.detail + kField;
    for (const std::string& item : outcome.documented) text += item + kItem;
    text += kField + std::to_string(outcome.allocations) + kField + std::to_string(outcome.frees) + kField +
            outcome.allocationCase + kField + std::to_string(outcome.refusedBytes) + kField + outcome.refusedCase;
    return text;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = text.find(separator, begin);
        parts.push_back(text.substr(begin, end == std::string::npos ? std::string::npos : end - begin));
        if (end == std::string::npos) return parts;
        begin = end + 1;
    }
}

bool deserialize(const std::string& text, Outcome& outcome) {
    const std::vector<std::string> fields = split(text, kField);
    if (fields.size() != 8) return false;
    outcome.passed = fields[0] == "1";
    outcome.detail = fields[1];
    for (const std::string& item : split(fields[2], kItem)) {
        if (!item.empty()) outcome.documented.push_back(item);
    }
    outcome.allocations = std::stoull(fields[3]);
    outcome.frees = std::stoull(fields[4]);
    outcome.allocationCase = fields[5];
    outcome.refusedBytes = std::stoull(fields[6]);
    outcome.refusedCase = fields[7];
    return true;
}

// The first line of a sanitizer's report in a child's error output, if any.
std::string sanitizerLine(std::FILE* errors) {
    if (errors == nullptr) return std::string();
    std::fflush(errors);
    std::rewind(errors);
    char line[512];
    while (std::fgets(line, sizeof line, errors) != nullptr) {
        if (std::strstr(line, "ERROR: AddressSanitizer") != nullptr || std::strstr(line, "runtime error:") != nullptr ||
            std::strstr(line, "ERROR: LeakSanitizer") != nullptr) {
            std::string text(line);
            while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
            return text;
        }
    }
    return std::string();
}

struct Task {
    std::size_t effect;
    Check check;
    std::size_t slot;  // index among the effect's outcomes
};

struct Running {
    pid_t pid = -1;
    Task task{};
    SharedBlock* block = nullptr;
    std::FILE* errors = nullptr;
    std::chrono::steady_clock::time_point started;
};

double timeoutFor(const Options& options) {
    if (options.timeoutSeconds > 0) return options.timeoutSeconds;
    return 60.0 + 30.0 * options.level;
}

CheckResult notMade(const std::string& effect) {
    CheckResult result;
    result.effect = effect;
    result.check = Check::Create;
    result.passed = false;
    result.detail = "the factory made no effect for this registered identifier; nothing else was checked";
    return result;
}

}  // namespace

std::vector<CheckResult> validateInProcess(const std::vector<EffectMaker>& effects, const Options& options) {
    keepSubnormals();
    std::vector<CheckResult> results;
    for (const EffectMaker& maker : effects) {
        if (!detail::canMake(maker)) {
            results.push_back(notMade(maker.identifier));
            continue;
        }
        std::vector<Outcome> outcomes;
        for (Check check : kAllChecks) {
            if (check != Check::Allocation) outcomes.push_back(detail::runCheck(check, maker, options));
        }
        appendEffect(results, maker.identifier, outcomes);
    }
    return results;
}

std::vector<CheckResult> validateIsolated(const std::vector<EffectMaker>& effects, const Options& options) {
    const int jobs = options.jobs < 1 ? 1 : options.jobs;
    constexpr std::size_t kChecksPerEffect = std::size(kAllChecks) - 1;
    std::vector<std::vector<Outcome>> outcomes(effects.size(), std::vector<Outcome>(kChecksPerEffect));
    std::vector<Task> tasks;
    std::vector<bool> made(effects.size());
    for (std::size_t e = 0; e < effects.size(); ++e) {
        made[e] = detail::canMake(effects[e]);
        if (!made[e]) continue;
        std::size_t slot = 0;
        for (Check check : kAllChecks) {
            if (check != Check::Allocation) tasks.push_back({e, check, slot++});
        }
    }
    void* memory = mmap(nullptr, sizeof(SharedBlock) * static_cast<std::size_t>(jobs), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return validateInProcess(effects, options);
    auto* blocks = static_cast<SharedBlock*>(memory);
    std::vector<Running> running(static_cast<std::size_t>(jobs));
    std::size_t next = 0;
    std::size_t active = 0;
    const double timeout = timeoutFor(options);

    auto finish = [&](Running& slot, int status, bool timedOut) {
        Outcome outcome;
        const bool clean = !timedOut && WIFEXITED(status) && WEXITSTATUS(status) == 0 && slot.block->done == 1;
        if (!clean || !deserialize(std::string(slot.block->result), outcome)) {
            outcome = Outcome();
            outcome.passed = false;
            char how[160];
            if (timedOut) {
                std::snprintf(how, sizeof how, "stalled: no result within %.0f s", timeout);
            } else if (WIFSIGNALED(status)) {
                std::snprintf(how, sizeof how, "crashed: signal %d (%s)", WTERMSIG(status), strsignal(WTERMSIG(status)));
            } else {
                std::snprintf(how, sizeof how, "crashed: exit status %d", WIFEXITED(status) ? WEXITSTATUS(status) : -1);
            }
            std::string text = how;
            const std::string sanitizer = sanitizerLine(slot.errors);
            if (!sanitizer.empty()) text += ": " + sanitizer;
            text += " [" + std::string(slot.block->crashNote) + "; seed " + std::to_string(options.seed) + "]";
            outcome.detail = text;
        }
        outcomes[slot.task.effect][slot.task.slot] = outcome;
        if (slot.errors != nullptr) std::fclose(slot.errors);
        slot = Running();
        --active;
    };

    while (next < tasks.size() || active > 0) {
        for (std::size_t s = 0; s < running.size() && next < tasks.size(); ++s) {
            if (running[s].pid != -1) continue;
            Running& slot = running[s];
            slot.task = tasks[next++];
            slot.block = &blocks[s];
            std::memset(slot.block, 0, sizeof(SharedBlock));
            std::snprintf(slot.block->crashNote, kNoteBytes, "starting");
            slot.errors = std::tmpfile();
            std::fflush(nullptr);
            const pid_t pid = fork();
            if (pid == 0) {
                if (slot.errors != nullptr) dup2(fileno(slot.errors), STDERR_FILENO);
                keepSubnormals();
                detail::setCrashNoteBuffer(slot.block->crashNote, kNoteBytes);
                const Outcome outcome = detail::runCheck(slot.task.check, effects[slot.task.effect], options);
                const std::string text = serialize(outcome);
                std::snprintf(slot.block->result, kResultBytes, "%s", text.c_str());
                slot.block->done = 1;
                _exit(0);
            }
            if (pid < 0) {
                Outcome outcome;
                outcome.passed = false;
                outcome.detail = "could not start a child process";
                outcomes[slot.task.effect][slot.task.slot] = outcome;
                if (slot.errors != nullptr) std::fclose(slot.errors);
                slot = Running();
                continue;
            }
            slot.pid = pid;
            slot.started = std::chrono::steady_clock::now();
            ++active;
        }
        bool progressed = false;
        for (Running& slot : running) {
            if (slot.pid == -1) continue;
            int status = 0;
            const pid_t done = waitpid(slot.pid, &status, WNOHANG);
            if (done == slot.pid) {
                finish(slot, status, false);
                progressed = true;
            } else if (std::chrono::duration<double>(std::chrono::steady_clock::now() - slot.started).count() >
                       timeout) {
                kill(slot.pid, SIGKILL);
                waitpid(slot.pid, &status, 0);
                finish(slot, status, true);
                progressed = true;
            }
        }
        if (!progressed) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    munmap(memory, sizeof(SharedBlock) * static_cast<std::size_t>(jobs));
    std::vector<CheckResult> results;
    for (std::size_t e = 0; e < effects.size(); ++e) {
        if (made[e]) {
            appendEffect(results, effects[e].identifier, outcomes[e]);
        } else {
            results.push_back(notMade(effects[e].identifier));
        }
    }
    return results;
}

Tally tally(const std::vector<CheckResult>& results) {
    Tally counts;
    for (const CheckResult& result : results) (result.passed ? counts.passed : counts.failed)++;
    return counts;
}

std::string formatText(const std::vector<CheckResult>& results, double seconds) {
    std::string text;
    for (const CheckResult& result : results) {
        text += result.passed ? "PASS  " : "FAIL  ";
        text += result.effect + ": " + checkName(result.check);
        if (!result.passed) text += ": " + result.detail;
        text += '\n';
        for (const std::string& note : result.documented) text += "      documented behaviour: " + note + '\n';
    }
    char time[64];
    std::snprintf(time, sizeof time, "time %.1f s\n", seconds);
    text += time;
    const Tally counts = tally(results);
    text += std::to_string(counts.passed) + " passed, " + std::to_string(counts.failed) + " failed\n";
    return text;
}

namespace {

std::string jsonString(const std::string& value) {
    std::string out = "\"";
    for (unsigned char c : value) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\t': out += "\\t"; break;
            default:
                if (c < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                    out += escaped;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out + "\"";
}

}  // namespace

std::string formatJson(const std::vector<CheckResult>& results, double seconds, const Options& options) {
    const Tally counts = tally(results);
    std::string text = "{\n  \"level\": " + std::to_string(options.level) + ",\n  \"seed\": " +
                       std::to_string(options.seed) + ",\n";
    char time[64];
    std::snprintf(time, sizeof time, "  \"seconds\": %.3f,\n", seconds);
    text += time;
    text += "  \"results\": [";
    for (std::size_t i = 0; i < results.size(); ++i) {
        const CheckResult& result = results[i];
        text += i == 0 ? "\n" : ",\n";
        text += "    {\"effect\": " + jsonString(result.effect) + ", \"check\": " + jsonString(checkName(result.check)) +
                ", \"passed\": " + (result.passed ? "true" : "false") + ", \"detail\": " + jsonString(result.detail) +
                ", \"documented\": [";
        for (std::size_t k = 0; k < result.documented.size(); ++k) {
            text += (k == 0 ? "" : ", ") + jsonString(result.documented[k]);
        }
        text += "]}";
    }
    text += "\n  ],\n  \"passed\": " + std::to_string(counts.passed) + ",\n  \"failed\": " +
            std::to_string(counts.failed) + ",\n  \"summary\": " +
            jsonString(std::to_string(counts.passed) + " passed, " + std::to_string(counts.failed) + " failed") +
            "\n}\n";
    return text;
}

}  // namespace afv
