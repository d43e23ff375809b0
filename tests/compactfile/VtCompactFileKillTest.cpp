// A writer process is killed with SIGKILL at many moments. Its writes between
// two Flush calls are one transaction, so after each kill the container must
// open and hold every entry exactly as the last finished Flush left it, or,
// when the kill may have come during a Flush, exactly as that whole interval
// left it.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <optional>
#include <random>
#include <thread>

#include "CompactFileTestSupport.h"

using namespace VTC;
using namespace cftest;

namespace {

constexpr int entryCount = 6;
constexpr int streamedEntry = 1;  // written in chunks from a file; entry 0 is large too, the rest small
constexpr int killCount = 50;
constexpr int generationsPerRun = 1000;  // each run's generations start at run * 1000: never seen before
constexpr std::size_t headerSize = 8;
constexpr std::size_t mebibyte = 1024 * 1024;

// What entry k holds after generation g: nothing, or a value whose header
// names (k, g) and whose size and bytes follow from both.
std::optional<Bytes> StateOf(int k, std::uint32_t g)
{
    if (g > 0 && (g + static_cast<std::uint32_t>(k)) % 5 == 4) return std::nullopt;
    const std::size_t size = k == 0 ? 3 * mebibyte + g % 1000
                             : k == streamedEntry ? 2 * mebibyte + 1 + g % 3
                                                  : headerSize + (g * 37u + static_cast<unsigned>(k) * 11u) % 30000;
    Bytes value = Pattern(g * 131u + static_cast<unsigned>(k), size);
    const std::array<std::uint32_t, 2> header = {static_cast<std::uint32_t>(k), g};
    std::memcpy(value.data(), header.data(), headerSize);
    return value;
}

ZedaUnicodeString KeyOf(int k)
{
    return ZedaUnicodeString::FromUtf8("entry-" + std::to_string(k));
}

struct Ack {
    std::int32_t k;  // flushAck for a finished Flush
    std::uint32_t g;
};
constexpr std::int32_t flushAck = -1;
using Generations = std::array<std::uint32_t, entryCount>;

// The writer's index-th operation in a run. Each run starts at another entry,
// so that the kills land in small and large writes alike.
Ack OperationOf(int run, int index)
{
    return Ack{(index + run) % entryCount, static_cast<std::uint32_t>(run * generationsPerRun + index / entryCount)};
}

// Puts entry k into its state of generation g.
int Apply(VtCompactFile& file, const std::string& scratch, Ack operation)
{
    const std::optional<Bytes> state = StateOf(operation.k, operation.g);
    const ZedaUnicodeString key = KeyOf(operation.k);
    if (!state) {
        const int rc = file.Remove(key);
        return rc == VT_CF_KEY_NOT_FOUND ? VT_CF_OK : rc;
    }
    if (operation.k != streamedEntry) return file.SetAt(key, ToArray(*state), 0, 0, 0);
    WriteFile(scratch, *state);
    return file.SetAtFromFile(key, ZedaUnicodeString::FromUtf8(scratch));
}

// The writer: replaces or removes one entry after another, flushing after
// every round of entryCount writes and compacting after every third, and
// reports each finished write and Flush on `ackFd`, until it is killed.
[[noreturn]] void RunWriter(const std::string& container, const std::string& scratch, int run, int ackFd)
{
    VtCompactFile file;
    if (file.Open(ZedaUnicodeString::FromUtf8(container), u"", 4) != VT_CF_OK) _exit(10);
    const auto report = [ackFd](Ack ack) {
        if (write(ackFd, &ack, sizeof ack) != static_cast<ssize_t>(sizeof ack)) _exit(12);
    };
    for (int index = 0;; ++index) {
        const Ack operation = OperationOf(run, index);
        if (Apply(file, scratch, operation) != VT_CF_OK) _exit(11);
        report(operation);
        if ((index + 1) % entryCount != 0) continue;
        if (file.Flush() != VT_CF_OK) _exit(13);
        report(Ack{flushAck, 0});
        if ((index + 1) % (3 * entryCount) == 0 && file.Compact() != VT_CF_OK) _exit(14);
    }
}

class CompactFileKillTest : public TempDirTest {
protected:
    // Whether the container holds exactly the given generation of every entry and no other key.
    bool Holds(int mode, const Generations& expected)
    {
        VtCompactFile file;
        EXPECT_EQ(file.Open(UPathOf("kill.cf"), u"", mode), VT_CF_OK);
        EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_KEYED);
        std::vector<ZedaUnicodeString> keys;
        for (int k = 0; k < entryCount; ++k) {
            const std::optional<Bytes> state = StateOf(k, expected[k]);
            VtByteArray bytes;
            long long size = 0;
            const int rc = file.Lookup(KeyOf(k), bytes, size, 0);
            if (state ? rc != VT_CF_OK || ToBytes(bytes) != *state : rc != VT_CF_KEY_NOT_FOUND) return false;
            if (state) keys.push_back(KeyOf(k));
        }
        std::ranges::sort(keys);
        return file.GetKeys() == keys;
    }
};

TEST_F(CompactFileKillTest, EachFlushIntervalIsAllOrNothingAfterSigkill)
{
    Generations flushed{};
    {
        VtCompactFile file;
        ASSERT_EQ(file.Create(UPathOf("kill.cf"), 32, u"", 4), VT_CF_OK);
        for (int k = 0; k < entryCount; ++k) ASSERT_EQ(file.SetAt(KeyOf(k), ToArray(*StateOf(k, 0)), 0, 0, 0), VT_CF_OK);
    }
    // Each kill waits for a random number of acknowledgements (up to three
    // rounds, so flushes and compactions are hit too), then for a delay spread
    // evenly on a log scale from 20 us to 40 ms: kills land in every kind of
    // operation at every depth, however fast the machine is.
    std::mt19937 random(20240611);
    std::uniform_int_distribution<int> acksBeforeDelay(0, 3 * (entryCount + 1));
    std::uniform_real_distribution<double> logDelay(std::log(20e-6), std::log(40e-3));
    int totalWrites = 0, killsAtFlush = 0, intervalsLanded = 0;
    for (int run = 1; run <= killCount; ++run) {
        int pipeFds[2];
        ASSERT_EQ(pipe(pipeFds), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(pipeFds[0]);
            RunWriter(PathOf("kill.cf"), PathOf("scratch"), run, pipeFds[1]);
        }
        close(pipeFds[1]);

        int writes = 0, acks = 0, writesSinceFlush = 0;
        Generations current = flushed;
        const auto takeAck = [&] {
            Ack ack{};
            if (read(pipeFds[0], &ack, sizeof ack) != static_cast<ssize_t>(sizeof ack)) return false;
            ++acks;
            if (ack.k == flushAck) {
                EXPECT_EQ(writesSinceFlush, entryCount);
                flushed = current;
                writesSinceFlush = 0;
                return true;
            }
            EXPECT_EQ(ack.k, OperationOf(run, writes).k);
            current[ack.k] = ack.g;
            ++writes;
            ++writesSinceFlush;
            return true;
        };
        const int wanted = acksBeforeDelay(random);
        while (acks < wanted && takeAck()) {
        }
        std::this_thread::sleep_for(std::chrono::duration<double>(std::exp(logDelay(random))));
        ASSERT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
            << "writer stopped by itself with status " << (WIFEXITED(status) ? WEXITSTATUS(status) : -1);
        while (takeAck()) {
        }
        close(pipeFds[0]);
        totalWrites += writes;

        // Only an interval whose writes all finished can have reached its
        // Flush. Both a reader and a writer must get past what the killed
        // writer left.
        const int mode = run % 2 == 0 ? VT_CF_MODE_READ : VT_CF_MODE_READWRITE;
        const bool atFlush = writesSinceFlush == entryCount;
        killsAtFlush += atFlush ? 1 : 0;
        if (Holds(mode, flushed)) continue;
        ASSERT_TRUE(atFlush && Holds(mode, current))
            << "after kill " << run << " with " << writes << " writes done, the container is neither as the last "
            << "Flush left it" << (atFlush ? " nor as the interval being flushed left it" : "");
        flushed = current;
        ++intervalsLanded;
    }
    std::printf("kills: %d, writes finished: %d, kills at a Flush: %d, of which found flushed: %d\n", killCount,
                totalWrites, killsAtFlush, intervalsLanded);
}

}  // namespace
