// The interpreter of PTX: small kernels written by hand. What PTX defines is asked for, and every check for a fault
// that it must report.
#include "thread_block.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace tarn::ptx;

namespace {

constexpr std::uint32_t unwritten = 0xfffdc3d7;

/// One allocation, at an address of its own, and its shadow.
class OneAllocation : public Memory
{
public:
    static constexpr std::uint64_t begin = 0x10100;

    explicit OneAllocation(std::size_t words) : words_(words, unwritten), shadow_(words) {}

    Allocation find(std::uint64_t) override
    {
        return {begin, begin + 4 * words_.size(), reinterpret_cast<char*>(words_.data()), shadow_.data()};
    }

    template <class T>
    T* as()
    {
        return reinterpret_cast<T*>(words_.data());
    }

private:
    std::vector<std::uint32_t> words_;
    std::vector<ShadowWord> shadow_;
};

/// A kernel k(u64 p) of the given body, with its declarations.
std::unique_ptr<const Module> module(const std::string& body)
{
    return parse(".version 9.0\n.target sm_90\n.address_size 64\n.shared .align 4 .b8 tile[512];\n"
                 ".visible .entry k(\n.param .u64 k_param_0\n)\n{\n"
                 ".reg .pred %p<9>;\n.reg .b16 %rs<9>;\n.reg .b32 %r<9>;\n.reg .b32 %f<9>;\n.reg .b64 %rd<9>;\n"
                 ".reg .b64 %fd<9>;\n.local .align 4 .b8 depot[8];\n"
                 "ld.param.u64 %rd1, [k_param_0];\nmov.u32 %r1, %tid.x;\nmov.u32 %r2, %ctaid.x;\n"
                 // %rd2: the thread's own word
                 "mul.wide.u32 %rd2, %r1, 4;\nadd.s64 %rd2, %rd1, %rd2;\n" +
                 body + "\nret;\n}\n");
}

/// Runs the body on blocks of threads; the kernel's parameter is the allocation.
void run(const std::string& body, OneAllocation& memory, unsigned threads = 1, unsigned blocks = 1,
         CounterTable* counters = nullptr)
{
    static unsigned serial = 0;
    const auto code = module(body);
    Launch launch{
        &code->kernels.at("k"), {blocks, 1, 1}, {threads, 1, 1}, {}, &memory, ++serial, unwritten, true, counters};
    const std::uint64_t address = OneAllocation::begin;
    launch.parameters.resize(8);
    std::memcpy(launch.parameters.data(), &address, 8);
    ThreadBlock block(launch);
    for (unsigned x = 0; x < blocks; ++x)
        block.run({x, 0, 0});
    block.deliverCounters();
}

/// The result of a body that leaves it in %r3.
std::uint32_t bits(const std::string& body)
{
    OneAllocation memory(1);
    run(body + "\nst.global.u32 [%rd1], %r3;", memory);
    return *memory.as<std::uint32_t>();
}

/// The report of a body that must not pass.
std::string fault(const std::string& body, unsigned threads = 1, unsigned blocks = 1)
{
    OneAllocation memory(64);
    try {
        run(body, memory, threads, blocks);
    } catch (const Fault& found) {
        return found.what();
    }
    return "nothing";
}

/// Expects a report of these words.
void expectFault(const std::string& words, const std::string& body, unsigned threads = 1, unsigned blocks = 1)
{
    EXPECT_NE(fault(body, threads, blocks).find(words), std::string::npos) << words << " of " << body;
}

} // namespace

TEST(Ptx, IntegersWrapAndShiftsAreClamped)
{
    EXPECT_EQ(bits("mov.u32 %r4, 4294967295;\nmad.lo.s32 %r3, %r4, %r4, 5;"), 6u);
    EXPECT_EQ(bits("mov.b32 %r4, -8;\nshr.s32 %r3, %r4, 1;"), std::uint32_t(-4));
    EXPECT_EQ(bits("mov.b32 %r4, -8;\nshr.s32 %r3, %r4, 40;"), std::uint32_t(-1));
    EXPECT_EQ(bits("mov.b32 %r4, -8;\nshr.u32 %r3, %r4, 40;"), 0u);
    EXPECT_EQ(bits("mov.b32 %r4, 1;\nshl.b32 %r3, %r4, 32;"), 0u);
    EXPECT_EQ(bits("mov.b32 %r4, -1;\nmul.wide.s32 %rd3, %r4, 3;\nshr.u64 %rd3, %rd3, 32;\ncvt.u32.u64 %r3, %rd3;"),
              0xffffffffu);
    EXPECT_EQ(bits("mov.b32 %r4, -1;\nmul.wide.u32 %rd3, %r4, 3;\nshr.u64 %rd3, %rd3, 32;\ncvt.u32.u64 %r3, %rd3;"),
              2u);
    EXPECT_EQ(bits("mov.b32 %r4, -5;\nmax.s32 %r3, %r4, 3;"), 3u);
    EXPECT_EQ(bits("mov.b32 %r4, -5;\nmax.u32 %r3, %r4, 3;"), std::uint32_t(-5));
    EXPECT_EQ(bits("mov.b32 %r4, -1;\ncvt.s64.s32 %rd3, %r4;\nshr.u64 %rd3, %rd3, 60;\ncvt.u32.u64 %r3, %rd3;"), 15u);
}

TEST(Ptx, ProductsAreFusedOnlyWhereTheInstructionSaysSo)
{
    // (1 + 2^-12)^2 = 1 + 2^-11 + 2^-24: the last term survives in the fused sum alone.
    const std::string x = "mov.f32 %f1, 0f3F800800;\nmov.f32 %f2, 0fBF801000;\n"; // 1 + 2^-12, -(1 + 2^-11)
    const std::string out = "mov.b32 %r3, %f3;";
    EXPECT_EQ(bits(x + "fma.rn.f32 %f3, %f1, %f1, %f2;\n" + out), 0x33800000u);
    EXPECT_EQ(bits(x + "mul.f32 %f3, %f1, %f1;\nadd.f32 %f3, %f3, %f2;\n" + out), 0u);
    EXPECT_EQ(bits("mov.f64 %fd1, 0d3FF0000010000000;\ncvt.rn.f32.f64 %f3, %fd1;\n" + out), 0x3f800000u)
        << "ties to even";
    EXPECT_EQ(bits("mov.f32 %f1, 0f80000000;\nneg.f32 %f3, %f1;\n" + out), 0u);
    EXPECT_EQ(bits("mov.f32 %f1, 0f40000000;\nsqrt.rn.f32 %f3, %f1;\n" + out), 0x3fb504f3u);
}

TEST(Ptx, ComparisonsKnowNaN)
{
    const struct
    {
        const char* relation;
        bool numbers, nan; // 1 and 2; 1 and NaN
    } relations[] = {{"eq", false, false}, {"ne", true, false},  {"lt", true, false},  {"le", true, false},
                     {"gt", false, false}, {"ge", false, false}, {"equ", false, true}, {"neu", true, true},
                     {"ltu", true, true},  {"leu", true, true},  {"gtu", false, true}, {"geu", false, true}};
    for (const auto& [relation, numbers, nan] : relations)
        for (const char* other : {"0f40000000", "0f7FC00000"}) {
            const std::string body = "mov.f32 %f1, 0f3F800000;\nmov.f32 %f2, " + std::string(other) + ";\nsetp." +
                                     relation + ".f32 %p1, %f1, %f2;\nselp.b32 %r3, 1, 0, %p1;";
            EXPECT_EQ(bits(body), unsigned(other[2] == '4' ? numbers : nan)) << relation << ' ' << other;
        }
}

TEST(Ptx, ThreadsPartAndMeetAgain)
{
    // Thread t adds 1 to 0 t times, odd threads then 100; all meet at a barrier.
    OneAllocation memory(64);
    run("mov.u32 %r3, 0;\nmov.u32 %r4, 0;\n$next:\nsetp.ge.u32 %p1, %r4, %r1;\n@%p1 bra $done;\nadd.s32 %r3, %r3, 1;\n"
        "add.s32 %r4, %r4, 1;\nbra.uni $next;\n$done:\nand.b32 %r5, %r1, 1;\nsetp.eq.s32 %p2, %r5, 1;\n"
        "@%p2 add.s32 %r3, %r3, 100;\nbar.sync 0;\nst.global.u32 [%rd2], %r3;",
        memory, 64);
    for (unsigned t = 0; t < 64; ++t)
        EXPECT_EQ(memory.as<std::uint32_t>()[t], t + 100 * (t % 2));
}

TEST(Ptx, MemoryOfEveryKindAndWidth)
{
    OneAllocation memory(64);
    // Shared: neighbours exchange. Local: a byte with its sign. Vectors of two.
    run("mov.u32 %r3, tile;\nshl.b32 %r4, %r1, 2;\nadd.s32 %r3, %r3, %r4;\nst.shared.u32 [%r3], %r1;\nbar.sync 0;\n"
        "xor.b32 %r4, %r4, 4;\nmov.u32 %r5, tile;\nadd.s32 %r5, %r5, %r4;\nld.shared.u32 %r6, [%r5];\n"
        "st.global.u32 [%rd2], %r6;",
        memory, 8);
    for (unsigned t = 0; t < 8; ++t)
        EXPECT_EQ(memory.as<std::uint32_t>()[t], t ^ 1);
    run("mov.u64 %rd3, depot;\nmov.b16 %rs1, 254;\nst.local.u8 [%rd3+3], %rs1;\nld.local.s8 %rs2, [%rd3+3];\n"
        "cvt.s32.s16 %r3, %rs2;\nmov.u32 %r4, 7;\nst.global.v2.u32 [%rd1+8], {%r3, %r4};\n"
        "ld.global.v2.u32 {%r5, %r6}, [%rd1+8];\nadd.s32 %r5, %r5, %r6;\nst.global.u32 [%rd1], %r5;",
        memory);
    run("mov.b64 %rd3, k_param_0;\nadd.s64 %rd3, %rd3, 2;\nld.param.u16 %rs1, [%rd3+-2];\ncvt.u32.u16 %r3, %rs1;\n"
        "st.global.u32 [%rd1+4], %r3;",
        memory);
    EXPECT_EQ(memory.as<std::int32_t>()[1], int(OneAllocation::begin & 0xffff)) << "a parameter's address";
    EXPECT_EQ(memory.as<std::int32_t>()[2], -2);
    EXPECT_EQ(memory.as<std::int32_t>()[0], 5);
}

TEST(Ptx, AtomicsAddUpAcrossBlocks)
{
    OneAllocation memory(1);
    *memory.as<float>() = 0;
    run("mov.f32 %f1, 0f3F800000;\natom.global.add.f32 %f2, [%rd1], %f1;", memory, 32, 4);
    EXPECT_EQ(*memory.as<float>(), 128);
    *memory.as<int>() = -3;
    run("atom.global.max.s32 %r3, [%rd1], %r1;", memory, 32, 4);
    EXPECT_EQ(*memory.as<int>(), 31);
}

TEST(Ptx, AddressesAreChecked)
{
    expectFault("not allocated", "st.global.u32 [%rd1+256], %r1;");
    expectFault("not allocated", "ld.global.u32 %r3, [%rd1+-4];");
    expectFault("not allocated", "mov.b64 %rd3, -4;\nld.global.u32 %r3, [%rd3];");
    expectFault("not divisible by 4", "st.global.u32 [%rd1+2], %r1;");
    expectFault("not divisible by 8", "st.global.v2.u32 [%rd1+4], {%r1, %r1};");
    expectFault("shared memory behind its end", "mov.u32 %r3, tile;\nst.shared.u32 [%r3+512], %r1;");
    expectFault("local memory behind its end", "mov.u64 %rd3, depot;\nst.local.u32 [%rd3+8], %r1;");
    expectFault("parameters behind their end", "ld.param.u64 %rd3, [k_param_0+8];");
    // An offset in 32 bits: 2^31 times 4, sign-extended.
    expectFault("not allocated", "mov.b32 %r3, -2147483648;\ncvt.s64.s32 %rd3, %r3;\nadd.s64 %rd3, %rd1, %rd3;\n"
                                 "st.global.u32 [%rd3], %r1;");
}

TEST(Ptx, WhatNobodyWroteMayBeMovedButNotUsed)
{
    expectFault("nobody has written", "ld.global.f32 %f1, [%rd1];\nadd.f32 %f2, %f1, %f1;");
    expectFault("nobody has written", "ld.global.f64 %fd1, [%rd1];\nsetp.lt.f64 %p1, %fd1, %fd1;");
    EXPECT_EQ(fault("ld.global.f32 %f1, [%rd1];\nst.global.f32 [%rd1+4], %f1;"), "nothing");
    expectFault("shared memory that nobody has", "mov.u32 %r3, tile;\nld.shared.f32 %f1, [%r3];");
    EXPECT_EQ(fault("mov.u32 %r3, tile;\nst.shared.u32 [%r3], %r1;\nld.shared.f32 %f1, [%r3];"), "nothing");
}

TEST(Ptx, RacesInsideABlock)
{
    const std::string tile = "mov.u32 %r3, tile;\nshl.b32 %r4, %r1, 2;\nadd.s32 %r5, %r3, %r4;\nxor.b32 %r4, %r4, 4;\n"
                             "add.s32 %r6, %r3, %r4;\n"; // %r5: the thread's own word, %r6: its neighbour's
    const std::string own = "st.shared.u32 [%r5], %r1;\n", read = "ld.shared.u32 %r7, [%r6];\n", sync = "bar.sync 0;\n";
    EXPECT_EQ(fault(tile + own + sync + read + sync + own, 64), "nothing");
    expectFault("two threads", tile + own + read, 64);                  // read after write
    expectFault("two threads", tile + own + sync + read + own, 64);     // write after read
    expectFault("two threads", tile + "st.shared.u32 [%r3], %r1;", 64); // write after write
    // The same in device memory, where two reads are no race.
    expectFault("two threads", "st.global.u32 [%rd2], %r1;\nld.global.u32 %r3, [%rd1];", 32);
    EXPECT_EQ(fault("st.global.u32 [%rd2], %r1;\nbar.sync 0;\nld.global.u32 %r3, [%rd1];", 32), "nothing");
}

TEST(Ptx, RacesBetweenBlocks)
{
    const std::string add = "mov.f32 %f1, 0f3F800000;\natom.global.add.f32 %f2, [%rd1], %f1;\n";
    expectFault("two blocks", "st.global.u32 [%rd1], %r2;", 1, 2); // both write
    expectFault("two blocks", "setp.eq.u32 %p1, %r2, 0;\n@%p1 st.global.u32 [%rd1], %r1;\nld.global.u32 %r3, [%rd1];",
                1, 2);
    expectFault("two blocks", "setp.eq.u32 %p1, %r2, 3;\nld.global.u32 %r3, [%rd1];\n@%p1 st.global.u32 [%rd1], %r1;",
                1, 4);                                                     // several have read
    expectFault("two blocks", "st.global.u32 [%rd1], %r1;\n" + add, 1, 2); // atomic after plain
    expectFault("a race", add + "ld.global.u32 %r3, [%rd1];", 1, 2);       // plain after atomic
    EXPECT_EQ(fault("ld.global.u32 %r3, [%rd1];", 32, 4), "nothing");
}

TEST(Ptx, BarriersMustBeReachedByAll)
{
    expectFault("have ended", "setp.lt.u32 %p1, %r1, 32;\n@%p1 bra $end;\nbar.sync 0;\n$end:", 64);
    expectFault("different barriers",
                "setp.lt.u32 %p1, %r1, 32;\n@%p1 bra $other;\nbar.sync 0;\nbra.uni $end;\n$other:\n"
                "bar.sync 0;\n$end:",
                64);
}

TEST(Ptx, AReportSaysWhere)
{
    const auto code =
        parse(".version 9.0\n.target sm_90\n.address_size 64\n.visible .entry k(\n)\n{\n.reg .b64 %rd<2>;\n"
              ".reg .b32 %r<2>;\n.loc\t1 7 3\nmov.u64 %rd1, 0;\n"
              ".loc\t2 20 9, function_name $L__info_string0, inlined_at 1 26 5\n"
              "mov.u32 %r1, %tid.x;\nst.global.u32 [%rd1], %r1;\nret;\n}\n.file\t1 \"a.cu\"\n.file\t2 \"b.h\"\n");
    OneAllocation memory(1);
    const Launch launch{&code->kernels.at("k"), {2, 1, 1}, {2, 3, 1}, {}, &memory, 1, unwritten};
    try {
        ThreadBlock(launch).run({1, 0, 0});
        FAIL() << "nothing was reported";
    } catch (const Fault& found) {
        EXPECT_EQ(found.kind, Fault::Kind::address);
        EXPECT_STREQ(found.what(),
                     "device memory that is not allocated\n  kernel k\n  block  (1, 0, 0), thread (0, 0, 0)\n"
                     "  ptx    line 13: st.global.u32 [%rd1], %r1;\n"
                     "  source b.h:20, called from a.cu:26");
    }
}

TEST(Ptx, WhatIsNotKnownIsAnErrorWithKernelAndLine)
{
    const auto refusal = [](const std::string& body) -> std::string {
        try {
            module(body);
        } catch (const ParseError& error) {
            return error.what();
        }
        return "nothing";
    };
    EXPECT_EQ(refusal("vote.sync.any.pred %p1, %p2, -1;"),
              "ptx line 21 of k: an instruction that is not known: vote.sync.any.pred %p1, %p2, -1;");
    for (const char* body : {"add.f16 %rs1, %rs1, %rs1;", "add.s32 %r1, %r2;", "add.s64 %rd1, %rd1, %r1;",
                             "add.f32 %f1, %f1, 1;", "ld.shared.u32 %r1, [nowhere];", "bar.sync 1;", "bra $nowhere;",
                             "add.s32 %r1, %r1, 1x;", "add.s32 %q1, %r1, 1;", ".weird 3;", "add.s32 %r1, %r1, 1"})
        EXPECT_NE(refusal(body), "nothing") << body;
}

TEST(Ptx, CountersCountSectorsAndBanks)
{
    const auto counted = [](const std::string& body) {
        OneAllocation memory(2048);
        CounterTable table;
        run(body, memory, 64, 1, &table);
        return table.read().at("k");
    };
    // Two warps; consecutive words, then every 16th: 4 sectors a warp, then 32 of them for what would fit in 4.
    const Counters dense = counted("ld.global.u32 %r3, [%rd2];");
    EXPECT_EQ(dense.loadRequests, 2);
    EXPECT_EQ(dense.loadSectors, 8);
    EXPECT_EQ(dense.leastLoadSectors, 8);
    const Counters sparse =
        counted("mul.wide.u32 %rd3, %r1, 64;\nadd.s64 %rd3, %rd1, %rd3;\nst.global.u32 [%rd3], %r1;");
    EXPECT_EQ(sparse.storeSectors, 64);
    EXPECT_EQ(sparse.leastStoreSectors, 8);
    // Words two apart hit 16 banks twice, as far as they are in the first 128 of the tile.
    const Counters banks =
        counted("and.b32 %r4, %r1, 31;\nshl.b32 %r4, %r4, 3;\nmov.u32 %r3, tile;\nadd.s32 %r3, %r3, %r4;\n"
                "setp.lt.u32 %p1, %r1, 32;\n@%p1 st.shared.u32 [%r3], %r1;");
    EXPECT_EQ(banks.sharedRequests, 1);
    EXPECT_EQ(banks.sharedPasses, 2);
    // Three loads before the first use of one of them, then one; a barrier.
    const Counters batches = counted("ld.global.u32 %r3, [%rd2];\nld.global.u32 %r4, [%rd2+256];\n"
                                     "ld.global.u32 %r5, [%rd2+512];\nadd.s32 %r6, %r3, %r4;\nbar.sync 0;\n"
                                     "ld.global.u32 %r7, [%rd2];\nadd.s32 %r7, %r7, %r7;");
    EXPECT_EQ(batches.batchedLoads, 4);
    EXPECT_EQ(batches.loadBatches, 2);
    EXPECT_EQ(batches.barriers, 1);
}
