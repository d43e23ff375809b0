// A writer process is killed with SIGKILL at many moments; after each kill
// the container must open and hold every entry as it was before the write
// under way or as that write made it.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include "CompactFileTestSupport.h"
#include "VtCompactFile.h"

using namespace VTC;
using namespace cftest;
using ZEDA::ZedaUnicodeString;

namespace {

constexpr int entryCount = 6;
constexpr int killCount = 50;
constexpr int generationsPerRun = 1000;  // each run's generations start at run * 1000: never seen before
constexpr std::size_t headerSize = 8;
constexpr std::size_t mebibyte = 1024 * 1024;

// Entry 0 is large, entry 1 is large and written in streamed chunks, the rest are small.
bool IsStreamed(int k)
{
    return k == 1;
}

// What entry k holds after generation g: nothing, or a value whose header
// names (k, g) and whose size and bytes follow from both.
std::optional<Bytes> StateOf(int k, std::uint32_t g)
{
    if (g > 0 && (g + static_cast<std::uint32_t>(k)) % 5 == 4) return std::nullopt;
    const std::size_t size = k == 0 ? 3 * mebibyte + g % 1000
                             : IsStreamed(k) ? 2 * mebibyte + 1 + g % 3
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
    std::int32_t k;
    std::uint32_t g;
};

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
    if (!IsStreamed(operation.k)) return file.SetAt(key, ToArray(*state), 0, 0, 0);
    WriteFileBytes(scratch, *state);
    return file.SetAtFromFile(key, ZedaUnicodeString::FromUtf8(scratch));
}

// The writer: replaces or removes one entry after another, flushing after
// every round and compacting after every third, and reports each finished
// operation on `ackFd`, until it is killed.
[[noreturn]] void RunWriter(const std::string& container, const std::string& scratch, int run, int ackFd)
{
    VtCompactFile file;
    if (file.Open(ZedaUnicodeString::FromUtf8(container), u"", 4) != VT_CF_OK) _exit(10);
    for (int index = 0;; ++index) {
        const Ack operation = OperationOf(run, index);
        if (Apply(file, scratch, operation) != VT_CF_OK) _exit(11);
        if (write(ackFd, &operation, sizeof operation) != static_cast<ssize_t>(sizeof operation)) _exit(12);
        if ((index + 1) % entryCount != 0) continue;
        if (file.Flush() != VT_CF_OK) _exit(13);
        if ((index + 1) % (3 * entryCount) == 0 && file.Compact() != VT_CF_OK) _exit(14);
    }
}

class CompactFileKillTest : public TempDirTest {
protected:
    // Checks the container against the last acknowledged generation of every
    // entry, allowing the one operation that was under way to have landed.
    // Returns the generation each entry was found at.
    std::array<std::uint32_t, entryCount> Verify(const std::array<std::uint32_t, entryCount>& acked, Ack inFlight,
                                                 int mode, int& inFlightLanded)
    {
        std::array<std::uint32_t, entryCount> found = acked;
        VtCompactFile file;
        const int opened = file.Open(UPathOf("kill.cf"), u"", mode);
        EXPECT_EQ(opened, VT_CF_OK);
        if (opened != VT_CF_OK) return found;
        EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_KEYED);
        const auto keys = file.GetKeys();
        for (int k = 0; k < entryCount; ++k) {
            const bool mayBeNew = inFlight.k == k;
            const std::optional<Bytes> before = StateOf(k, acked[k]);
            const std::optional<Bytes> after = mayBeNew ? StateOf(k, inFlight.g) : before;
            VtByteArray bytes;
            long long size = 0;
            const int rc = file.Lookup(KeyOf(k), bytes, size, 0);
            std::optional<Bytes> actual;
            if (rc == VT_CF_OK)
                actual = ToBytes(bytes);
            else
                EXPECT_EQ(rc, VT_CF_KEY_NOT_FOUND);
            EXPECT_EQ(std::ranges::count(keys, KeyOf(k)), actual ? 1 : 0);
            if (actual == before) continue;
            if (mayBeNew && actual == after) {
                found[k] = inFlight.g;
                ++inFlightLanded;
                continue;
            }
            ADD_FAILURE() << "entry " << k << " is torn: " << (actual ? actual->size() : 0) << " bytes, expected gen "
                          << acked[k] << (mayBeNew ? " or " + std::to_string(inFlight.g) : std::string());
        }
        std::size_t present = 0;
        for (int k = 0; k < entryCount; ++k) present += StateOf(k, found[k]) ? 1 : 0;
        EXPECT_EQ(keys.size(), present);
        return found;
    }
};

TEST_F(CompactFileKillTest, EveryEntryIsOldOrNewAfterSigkill)
{
    std::array<std::uint32_t, entryCount> acked{};
    {
        VtCompactFile file;
        ASSERT_EQ(file.Create(UPathOf("kill.cf"), 32, u"", 4), VT_CF_OK);
        for (int k = 0; k < entryCount; ++k) ASSERT_EQ(file.SetAt(KeyOf(k), ToArray(*StateOf(k, 0)), 0, 0, 0), VT_CF_OK);
    }

    // Each kill waits for a random number of finished writes (up to three
    // rounds, so flushes and compactions are hit too), then for a delay spread
    // evenly on a log scale from 20 us to 40 ms: kills land in every kind of
    // operation at every depth, however fast the machine is.
    std::mt19937 random(20240611);
    std::uniform_int_distribution<int> writesBeforeDelay(0, 3 * entryCount);
    std::uniform_real_distribution<double> logDelay(std::log(20e-6), std::log(40e-3));
    int totalAcks = 0, inFlightLanded = 0;
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

        int acks = 0;
        const auto takeAck = [&] {
            Ack ack{};
            if (read(pipeFds[0], &ack, sizeof ack) != static_cast<ssize_t>(sizeof ack)) return false;
            EXPECT_EQ(ack.g, OperationOf(run, acks).g);
            EXPECT_EQ(ack.k, OperationOf(run, acks).k);
            acked[ack.k] = ack.g;
            ++acks;
            return true;
        };
        const int wanted = writesBeforeDelay(random);
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
        totalAcks += acks;

        // Both a reader and a writer must get past what the killed writer left.
        const int mode = run % 2 == 0 ? VT_CF_MODE_READ : VT_CF_MODE_READWRITE;
        acked = Verify(acked, OperationOf(run, acks), mode, inFlightLanded);
        if (HasFailure()) FAIL() << "after kill " << run << " with " << acks << " writes done";
    }
    std::printf("kills: %d, writes finished: %d, unacknowledged writes found: %d\n", killCount, totalAcks,
                inFlightLanded);
}

}  // namespace
