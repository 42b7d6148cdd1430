// lut_contents_test.cpp: setting and reading LUT contents against a model of every body, over random sequences.
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "general/lut.h"
#include "lut_model.h"

using namespace lutmodel;

// Every test here may change the global LUT; it is identity again afterwards.
class LutContents : public GlobalLutTest {};

namespace {

const KaipHLut kOne = reinterpret_cast<KaipHLut>(1);

const unsigned kDepths[3] = {8, 10, 12};

// What the channel tables of one LUT (global, universal or single-depth) must hold; the
// 32-bit tables must hold the same, as every set writes both.
struct LutState {
    std::array<std::array<std::vector<uint32_t>, 3>, 3> ch;  // [(bits - 8) / 2][red, green, blue]
    LutState()
    {
        for (unsigned d = 0; d < 3; ++d)
            for (auto& table : ch[d]) {
                table.resize(1u << kDepths[d]);
                for (unsigned i = 0; i < table.size(); ++i) table[i] = i;
            }
    }
};

struct Target {
    KaipHLut h;  // null for the global LUT (reads use 1)
    int depth;   // 0 universal, 8/10/12 single, -1 global
    uint32_t type;
    LutState state;
    bool Reaches(unsigned bits) const { return depth <= 0 || unsigned(depth) == bits; }
    KaipHLut Read() const { return h ? h : kOne; }
};

template <class TLut>
void ExpectBody(const TLut& lut, const std::array<std::vector<uint32_t>, 3>& ch, uint32_t type, const char* what)
{
    const typename TLut::TValue* tables[3] = {lut.Red, lut.Green, lut.Blue};
    for (unsigned c = 0; c < 3; ++c)
        ASSERT_EQ(std::vector<uint32_t>(tables[c], tables[c] + TLut::N), ch[c]) << what << " channel " << c;
    for (unsigned i = 0; i < TLut::N; ++i) {
        ASSERT_TRUE(uint32_t(lut.Red32[i]) == ch[0][i] && uint32_t(lut.Green32[i]) == ch[1][i] &&
                    uint32_t(lut.Blue32[i]) == ch[2][i])
            << what << " 32-bit entry " << i << " depth " << TLut::Bits;
    }
    const bool full = (type & 0x00110000) == 0x00110000;
    ExpectBayerDerived(lut, full, full);
    if constexpr (TLut::Bits > 8) {
        // With KAIP_LUT_BAYER alone nothing fills the 8-bit Bayer rows.
        if ((type & 0x00110000) == KAIP_LUT_BAYER) {
            for (unsigned i = 0; i < TLut::N; ++i)
                ASSERT_EQ(lut.BayerRed8[i] | lut.BayerGreen8[i] | lut.BayerBlue8[i], 0);
        }
    }
}

const uint32_t kSelectors[] = {KAIP_LUT_CHANNEL_RED, KAIP_LUT_CHANNEL_GREEN, KAIP_LUT_CHANNEL_BLUE,
                               KAIP_LUT_CHANNEL_MONO};

// The getters read the same: whole tables, and single values by selector (mono reads green); an unknown
// selector, an index beyond the table or a null output writes nothing.
template <class T>
void ExpectGetters(KaipStatus (*get)(KaipHLut, T*, T*, T*), KaipStatus (*getValue)(KaipHLut, uint32_t, uint32_t, T*),
                   KaipHLut h, const std::array<std::vector<uint32_t>, 3>& ch)
{
    const uint32_t n = uint32_t(ch[0].size());
    std::array<std::vector<T>, 3> v{std::vector<T>(n, 0xAB), std::vector<T>(n, 0xAB), std::vector<T>(n, 0xAB)};
    ASSERT_EQ(get(h, v[0].data(), v[1].data(), v[2].data()), KASTATUS_OK);
    for (unsigned c = 0; c < 3; ++c) ASSERT_EQ(std::vector<uint32_t>(v[c].begin(), v[c].end()), ch[c]);
    for (unsigned sel = 0; sel < 4; ++sel) {
        T out = 42;
        ASSERT_EQ(getValue(h, kSelectors[sel], n - 1, &out), KASTATUS_OK);
        ASSERT_EQ(out, ch[sel == 3 ? 1 : sel][n - 1]);
    }
    T out = 42;
    ASSERT_EQ(getValue(h, 0x502D0004, 0, &out), KASTATUS_OK);
    ASSERT_EQ(getValue(h, KAIP_LUT_CHANNEL_RED, n, &out), KASTATUS_OK);
    ASSERT_EQ(getValue(h, KAIP_LUT_CHANNEL_RED, 0, nullptr), KASTATUS_OK);
    ASSERT_EQ(out, 42);
}

void ExpectTarget(const Target& t, const char* what)
{
    if (t.Reaches(8)) ExpectBody(*Body8(t.Read()), t.state.ch[0], t.type, what);
    if (t.Reaches(10)) ExpectBody(*Body10(t.Read()), t.state.ch[1], t.type, what);
    if (t.Reaches(12)) ExpectBody(*Body12(t.Read()), t.state.ch[2], t.type, what);
    if (t.Reaches(8)) ExpectGetters(KaipGet8BitLut, KaipGet8BitLutValue, t.h, t.state.ch[0]);
    if (t.Reaches(10)) ExpectGetters(KaipGet10BitLut, KaipGet10BitLutValue, t.h, t.state.ch[1]);
    if (t.Reaches(12)) ExpectGetters(KaipGet12BitLut, KaipGet12BitLutValue, t.h, t.state.ch[2]);
}

// The single-value rule written out: the entry itself, and on a universal object the other
// depths (a step upward; 10 to 8 scaled down; from 12 scaled up).
void ModelSetValue(Target& t, unsigned bits, unsigned c, uint64_t index, uint32_t value)
{
    auto put = [&](unsigned toBits, uint64_t i, uint32_t v) {
        auto& table = t.state.ch[(toBits - 8) / 2][c];
        if (i < table.size()) table[i] = v & (toBits == 8 ? 0xFF : 0xFFFF);
    };
    value &= bits == 8 ? 0xFF : 0xFFFF;
    put(bits, index, value);
    if (t.depth != 0) return;
    if (bits == 8) {
        for (unsigned j = 0; j < 4; ++j) put(10, index * 4 + j, value * 4);
        for (unsigned j = 0; j < 16; ++j) put(12, index * 16 + j, value * 16);
    } else if (bits == 10) {
        put(8, index / 4, value / 4);
        for (unsigned j = 0; j < 4; ++j) put(12, index * 4 + j, value * 4);
    } else {
        put(8, index * 16, value * 16);
        put(10, index * 4, value * 4);
    }
}

KaipStatus SetWhole(unsigned bits, KaipHLut h, const std::array<std::vector<uint32_t>, 3>& values, const bool given[3])
{
    if (bits == 8) {
        std::array<std::vector<uint8_t>, 3> v;
        for (unsigned c = 0; c < 3; ++c) v[c].assign(values[c].begin(), values[c].end());
        return KaipSet8BitLut(h, given[0] ? v[0].data() : nullptr, given[1] ? v[1].data() : nullptr,
                              given[2] ? v[2].data() : nullptr);
    }
    std::array<std::vector<uint16_t>, 3> v;
    for (unsigned c = 0; c < 3; ++c) v[c].assign(values[c].begin(), values[c].end());
    auto set = bits == 10 ? KaipSet10BitLut : KaipSet12BitLut;
    return set(h, given[0] ? v[0].data() : nullptr, given[1] ? v[1].data() : nullptr, given[2] ? v[2].data() : nullptr);
}

}  // namespace

TEST_F(LutContents, RandomSetSequencesMatchTheModel)
{
    const uint32_t kFull = KAIP_LUT_BAYER | KAIP_LUT_BAYER_16;
    std::vector<Target> targets;
    targets.push_back({nullptr, -1, kFull, {}});
    for (uint32_t flags : {0u, KAIP_LUT_BAYER, kFull}) {
        targets.push_back({KaipAllocateLut(flags), 0, flags, {}});
        for (unsigned bits : kDepths) targets.push_back({KaipAllocateLut(flags | bits), int(bits), flags | bits, {}});
    }
    const uint32_t seed = 20260;
    std::mt19937 rng(seed);
    for (unsigned op = 0; op < 600; ++op) {
        Target& t = targets[rng() % targets.size()];
        const KaipHLut h = t.depth < 0 ? (rng() % 2 ? nullptr : kOne) : t.h;
        const unsigned bits = kDepths[rng() % 3], n = 1u << bits;
        const bool foreign = t.depth > 0 && unsigned(t.depth) != bits;
        if (foreign) {
            uint16_t value = 0;
            ASSERT_EQ(bits == 8    ? KaipGet8BitLut(h, nullptr, nullptr, nullptr)
                      : bits == 10 ? KaipGet10BitLutValue(h, KAIP_LUT_CHANNEL_RED, 0, &value)
                                   : KaipGet12BitLut(h, nullptr, nullptr, nullptr),
                      KASTATUS_KAIP_INVALID_LUT_TYPE);
        }
        SCOPED_TRACE(::testing::Message() << "seed " << seed << " op " << op << " type 0x" << std::hex << t.type
                                          << std::dec << " bits " << bits);
        if (rng() % 4 == 0) {
            std::array<std::vector<uint32_t>, 3> values;
            bool given[3];
            for (unsigned c = 0; c < 3; ++c) {
                given[c] = rng() % 3 != 0;
                values[c].resize(n);
                for (auto& v : values[c]) v = rng() & (bits == 8 ? 0xFF : rng() % 8 ? (1u << bits) - 1 : 0xFFFF);
            }
            ASSERT_EQ(SetWhole(bits, h, values, given), foreign ? KASTATUS_KAIP_INVALID_LUT_TYPE : KASTATUS_OK);
            if (foreign) continue;
            for (unsigned c = 0; c < 3; ++c) {
                if (!given[c]) continue;
                for (unsigned to : kDepths) {
                    if (!t.Reaches(to) || (t.depth < 0 && to != bits)) continue;
                    t.state.ch[(to - 8) / 2][c] = to == bits ? values[c] : ConvertModel(values[c], bits, to);
                }
            }
        } else {
            const unsigned sel = rng() % 5;
            const uint32_t selector = sel < 4 ? kSelectors[sel] : 0x502D0004u + rng() % 3;
            const uint32_t index = rng() % 16 == 0 ? rng() : rng() % (n + 8);
            const uint32_t value = rng() % 4 == 0 ? rng() : rng() % n;
            auto set = bits == 8 ? KaipSet8BitLutValue : bits == 10 ? KaipSet10BitLutValue : KaipSet12BitLutValue;
            ASSERT_EQ(set(h, selector, index, value), foreign ? KASTATUS_KAIP_INVALID_LUT_TYPE : KASTATUS_OK);
            if (!foreign && sel < 4) ModelSetValue(t, bits, sel == 3 ? 1 : sel, index, value);
        }
        ExpectTarget(t, "after the set");
        if (HasFailure()) break;
    }
    for (const Target& t : targets) {
        ExpectTarget(t, "at the end");
        if (t.h) KaipFreeLut(t.h);
    }
}

// Two worked values; the other cases (12-bit indices, the global handle, tables not given) are
// rules of the model above.
TEST_F(LutContents, WorkedValues)
{
    Lut all(KAIP_LUT_BAYER | KAIP_LUT_BAYER_16);
    // 8-bit value 100 at index 10: a step of 400 in the 10-bit and 1600 in the 12-bit table.
    ASSERT_EQ(KaipSet8BitLutValue(all.h, KAIP_LUT_CHANNEL_RED, 10, 100), KASTATUS_OK);
    for (unsigned i = 40; i < 44; ++i) EXPECT_EQ(Body10(all.h)->Red[i], 400);
    for (unsigned i = 160; i < 176; ++i) EXPECT_EQ(Body12(all.h)->Red[i], 1600);
    EXPECT_EQ(Body12(all.h)->Red[176], 176);
    // A 10-bit value beyond the range is stored as given; its 8-bit Bayer output is cut to a byte.
    ASSERT_EQ(KaipSet10BitLutValue(nullptr, KAIP_LUT_CHANNEL_GREEN, 3, 5000), KASTATUS_OK);
    EXPECT_EQ(g_Lut10.Green[3], 5000);
    EXPECT_EQ(g_Lut10.Green32[3], 5000);
    EXPECT_EQ(g_Lut10.BayerGreen8[3], 226);
    EXPECT_EQ(g_Lut10.BayerGreen32[3], 0xE2E2E2E2u);
}
