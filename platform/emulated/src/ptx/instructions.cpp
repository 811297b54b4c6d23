/// The instructions: for each its rule, as PTX defines it. What is not here is an error of the parser. Each rounds for
/// itself: this file is built without contraction of products and sums.

#include "thread_block.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace tarn::ptx {

namespace {

using u8 = std::uint8_t;
using s8 = std::int8_t;
using u16 = std::uint16_t;
using s16 = std::int16_t;
using u32 = std::uint32_t;
using s32 = std::int32_t;
using u64 = std::uint64_t;
using s64 = std::int64_t;
using f32 = float;
using f64 = double;

/// A truth value in its row.
struct pred
{
    u8 value;
    operator bool() const { return value != 0; }
};

template <class T>
Type typeOf()
{
    if (std::is_same_v<T, pred>)
        return {'p', 1};
    return {std::is_floating_point_v<T> ? 'f' : 'b', int(sizeof(T))};
}

class Table
{
public:
    Table();

    const Opcode* find(const std::string& name) const
    {
        const auto found = opcodes_.find(name);
        return found == opcodes_.end() ? nullptr : &found->second;
    }

private:
    using Execute = std::function<void(ThreadBlock&, const Instruction&)>;
    using Space = ThreadBlock::Space;
    using Access = ThreadBlock::Access;

    // ---- forms ---------------------------------------------------------------------------------------------------

    /// destination = rule(sources...), thread by thread. The types are the destination's and the sources'. To compute
    /// with floating-point numbers that nobody has written is a fault.
    template <class D, class... S, class Rule>
    void compute(const std::string& name, Rule rule)
    {
        compute<D, S...>(name, rule, std::index_sequence_for<S...>());
    }
    template <class D, class... S, class Rule, std::size_t... source>
    void compute(const std::string& name, Rule rule, std::index_sequence<source...>)
    {
        add(name, Form::compute, {typeOf<D>(), typeOf<S>()...}, [rule](ThreadBlock& block, const Instruction& i) {
            if constexpr ((std::is_floating_point_v<S> && ...))
                (block.requireWritten<S>(i.rows[source + 1], i), ...);
            auto* const d = block.row<D>(i.rows[0]);
            const std::tuple<const S*...> sources{block.row<S>(i.rows[source + 1])...};
            block.forActive([=](int t) { d[t] = rule(std::get<source>(sources)[t]...); });
        });
    }

    template <class T, Space space>
    void load(const std::string& name)
    {
        add(name, Form::load, {typeOf<T>()}, [](ThreadBlock& block, const Instruction& i) {
            const int bytes = int(sizeof(T) * i.rows.size());
            block.count(space, Access::read, i, bytes);
            block.forActive([&](int t) {
                const char* from = block.reach(space, Access::read, i, t, bytes);
                for (const int row : i.rows) {
                    T value;
                    std::memcpy(&value, from, sizeof value);
                    block.put(row, t, value);
                    from += sizeof value;
                }
            });
        });
        opcodes_.at(name).global = space == Space::global;
    }
    template <class T, Space space>
    void store(const std::string& name)
    {
        add(name, Form::store, {typeOf<T>()}, [](ThreadBlock& block, const Instruction& i) {
            const int bytes = int(sizeof(T) * i.rows.size());
            block.count(space, Access::write, i, bytes);
            block.forActive([&](int t) {
                char* to = block.reach(space, Access::write, i, t, bytes);
                for (const int row : i.rows) {
                    const T value = block.get<T>(row, t);
                    std::memcpy(to, &value, sizeof value);
                    to += sizeof value;
                }
            });
        });
        opcodes_.at(name).global = space == Space::global;
    }

    /// destination = what stood there; there stands rule(that, source).
    template <class T, class Rule>
    void atomic(const std::string& name, Rule rule)
    {
        add(name, Form::atomic, {typeOf<T>()}, [rule](ThreadBlock& block, const Instruction& i) {
            block.count(Space::global, Access::update, i, sizeof(T));
            block.forActive([&](int t) {
                auto* const place = reinterpret_cast<T*>(block.reach(Space::global, Access::update, i, t, sizeof(T)));
                const T operand = block.get<T>(i.rows[1], t);
                T seen, next;
                __atomic_load(place, &seen, __ATOMIC_RELAXED);
                do
                    next = rule(seen, operand);
                while (!__atomic_compare_exchange(place, &seen, &next, false, __ATOMIC_RELAXED, __ATOMIC_RELAXED));
                block.put(i.rows[0], t, seen);
            });
        });
        opcodes_.at(name).global = true;
    }

    void add(const std::string& name, Form form, std::vector<Type> operands, Execute execute)
    {
        opcodes_[name] = {form, std::move(operands), std::move(execute)};
    }

    // ---- families of types ---------------------------------------------------------------------------------------

    template <class T>
    void anyType(const std::string& type);
    template <class T>
    void integer(const std::string& type);
    template <class T>
    void bits(const std::string& type);
    template <class T>
    void floating(const std::string& type);
    template <class T>
    void memory(const std::string& type);
    void predicates();
    void conversions();

    std::unordered_map<std::string, Opcode> opcodes_;
};

/// Copies, choices, comparisons.
template <class T>
void Table::anyType(const std::string& type)
{
    using Bits = std::conditional_t<sizeof(T) == 8, u64, std::conditional_t<sizeof(T) == 4, u32, u16>>;
    compute<Bits, Bits>("mov." + type, [](Bits a) { return a; });
    compute<T, T, T, pred>("selp." + type, [](T a, T b, pred c) { return c ? a : b; });
    compute<pred, T, T>("setp.eq." + type, [](T a, T b) { return pred{a == b}; });
    // Of floating-point numbers: both numbers, and different. The unordered relations hold for NaN, see there.
    compute<pred, T, T>("setp.ne." + type, [](T a, T b) { return pred{a != b && a == a && b == b}; });
    compute<pred, T, T>("setp.lt." + type, [](T a, T b) { return pred{a < b}; });
    compute<pred, T, T>("setp.le." + type, [](T a, T b) { return pred{a <= b}; });
    compute<pred, T, T>("setp.gt." + type, [](T a, T b) { return pred{a > b}; });
    compute<pred, T, T>("setp.ge." + type, [](T a, T b) { return pred{a >= b}; });
}

/// Two's complement, modulo 2^bits.
template <class T>
void Table::integer(const std::string& type)
{
    using U = std::make_unsigned_t<decltype(T{} + T{})>;
    using Wide = std::conditional_t<std::is_signed_v<T>, s64, u64>;
    using Twice = std::conditional_t<sizeof(T) == 2, std::conditional_t<std::is_signed_v<T>, s32, u32>, Wide>;
    constexpr u32 most = 8 * sizeof(T) - 1;
    anyType<T>(type);
    compute<T, T, T>("add." + type, [](T a, T b) { return T(U(a) + U(b)); });
    compute<T, T, T>("sub." + type, [](T a, T b) { return T(U(a) - U(b)); });
    compute<T, T>("neg." + type, [](T a) { return T(U(0) - U(a)); });
    compute<T, T, T>("mul.lo." + type, [](T a, T b) { return T(U(a) * U(b)); });
    compute<T, T, T, T>("mad.lo." + type, [](T a, T b, T c) { return T(U(a) * U(b) + U(c)); });
    compute<T, T, T>("min." + type, [](T a, T b) { return std::min(a, b); });
    compute<T, T, T>("max." + type, [](T a, T b) { return std::max(a, b); });
    // The count is clamped to the width; a signed value is filled with its sign.
    compute<T, T, u32>("shr." + type, [](T a, u32 n) { return n <= most ? T(a >> n) : T(a < 0 ? -1 : 0); });
    if constexpr (sizeof(T) <= 4) {
        compute<Twice, T, T>("mul.wide." + type, [](T a, T b) { return Twice(Twice(a) * Twice(b)); });
        compute<Twice, T, T, Twice>("mad.wide." + type, [](T a, T b, Twice c) {
            return Twice(std::make_unsigned_t<Twice>(Twice(a) * Twice(b)) + std::make_unsigned_t<Twice>(c));
        });
    }
}

template <class T>
void Table::bits(const std::string& type)
{
    constexpr u32 most = 8 * sizeof(T) - 1;
    anyType<T>(type);
    compute<T, T, T>("and." + type, [](T a, T b) { return T(a & b); });
    compute<T, T, T>("or." + type, [](T a, T b) { return T(a | b); });
    compute<T, T, T>("xor." + type, [](T a, T b) { return T(a ^ b); });
    compute<T, T>("not." + type, [](T a) { return T(~a); });
    compute<T, T, u32>("shl." + type, [](T a, u32 n) { return n <= most ? T(a << n) : T(0); });
    compute<T, T, u32>("shr." + type, [](T a, u32 n) { return n <= most ? T(a >> n) : T(0); });
}

/// IEEE arithmetic, rounded to nearest.
template <class T>
void Table::floating(const std::string& type)
{
    anyType<T>(type);
    for (const char* rounding : {".", ".rn."}) {
        compute<T, T, T>("add" + (rounding + type), [](T a, T b) { return a + b; });
        compute<T, T, T>("sub" + (rounding + type), [](T a, T b) { return a - b; });
        compute<T, T, T>("mul" + (rounding + type), [](T a, T b) { return a * b; });
    }
    compute<T, T, T, T>("fma.rn." + type, [](T a, T b, T c) { return std::fma(a, b, c); });
    compute<T, T, T>("div.rn." + type, [](T a, T b) { return a / b; });
    compute<T, T>("sqrt.rn." + type, [](T a) { return std::sqrt(a); });
    compute<T, T>("neg." + type, [](T a) { return -a; });
    compute<T, T>("abs." + type, [](T a) { return std::fabs(a); });
    compute<pred, T, T>("setp.equ." + type, [](T a, T b) { return pred{!(a < b || a > b)}; });
    compute<pred, T, T>("setp.neu." + type, [](T a, T b) { return pred{a != b}; });
    compute<pred, T, T>("setp.ltu." + type, [](T a, T b) { return pred{!(a >= b)}; });
    compute<pred, T, T>("setp.leu." + type, [](T a, T b) { return pred{!(a > b)}; });
    compute<pred, T, T>("setp.gtu." + type, [](T a, T b) { return pred{!(a <= b)}; });
    compute<pred, T, T>("setp.geu." + type, [](T a, T b) { return pred{!(a < b)}; });
    compute<pred, T>("testp.notanumber." + type, [](T a) { return pred{a != a}; });
    atomic<T>("atom.global.add." + type, [](T a, T b) { return a + b; });
}

template <class T>
void Table::memory(const std::string& type)
{
    load<T, Space::global>("ld.global." + type);
    load<T, Space::global>("ld.global.nc." + type);
    load<T, Space::shared>("ld.shared." + type);
    load<T, Space::local>("ld.local." + type);
    load<T, Space::parameters>("ld.param." + type);
    store<T, Space::global>("st.global." + type);
    store<T, Space::shared>("st.shared." + type);
    store<T, Space::local>("st.local." + type);
}

void Table::predicates()
{
    compute<pred, pred>("mov.pred", [](pred a) { return a; });
    compute<pred, pred>("not.pred", [](pred a) { return pred{!a}; });
    compute<pred, pred, pred>("and.pred", [](pred a, pred b) { return pred{a && b}; });
    compute<pred, pred, pred>("or.pred", [](pred a, pred b) { return pred{a || b}; });
    compute<pred, pred, pred>("xor.pred", [](pred a, pred b) { return pred{bool(a) != bool(b)}; });
}

/// cvt.DESTINATION.SOURCE; addresses of device memory are the same in the generic space.
void Table::conversions()
{
    compute<u64, u64>("cvta.to.global.u64", [](u64 a) { return a; });
    compute<u64, u64>("cvta.global.u64", [](u64 a) { return a; });
    compute<f64, f32>("cvt.f64.f32", [](f32 a) { return f64(a); });
    compute<f32, f64>("cvt.rn.f32.f64", [](f64 a) { return f32(a); });
    compute<f32, s32>("cvt.rn.f32.s32", [](s32 a) { return f32(a); });
    compute<f64, s32>("cvt.rn.f64.s32", [](s32 a) { return f64(a); });
    compute<s64, s32>("cvt.s64.s32", [](s32 a) { return s64(a); });
    compute<u64, u32>("cvt.u64.u32", [](u32 a) { return u64(a); });
    compute<u32, u64>("cvt.u32.u64", [](u64 a) { return u32(a); });
    compute<u32, u16>("cvt.u32.u16", [](u16 a) { return u32(a); });
    compute<s32, s16>("cvt.s32.s16", [](s16 a) { return s32(a); });
    compute<u64, u16>("cvt.u64.u16", [](u16 a) { return u64(a); });
    compute<u16, u32>("cvt.u16.u32", [](u32 a) { return u16(a); });
    compute<u16, u64>("cvt.u16.u64", [](u64 a) { return u16(a); });
}

Table::Table()
{
    integer<s16>("s16"), integer<s32>("s32"), integer<s64>("s64");
    integer<u16>("u16"), integer<u32>("u32"), integer<u64>("u64");
    bits<u16>("b16"), bits<u32>("b32"), bits<u64>("b64");
    floating<f32>("f32"), floating<f64>("f64");
    predicates();
    conversions();
    atomic<s32>("atom.global.max.s32", [](s32 a, s32 b) { return std::max(a, b); });

    memory<u8>("b8"), memory<u8>("u8"), memory<s8>("s8");
    memory<u16>("b16"), memory<u16>("u16"), memory<s16>("s16");
    memory<u32>("b32"), memory<u32>("u32"), memory<s32>("s32"), memory<f32>("f32");
    memory<u64>("b64"), memory<u64>("u64"), memory<s64>("s64"), memory<f64>("f64");

    for (const char* name : {"bra", "bra.uni"})
        add(name, Form::branch, {}, nullptr);
    for (const char* name : {"bar.sync", "barrier.sync"})
        add(name, Form::barrier, {}, nullptr);
    for (const char* name : {"ret", "exit"})
        add(name, Form::leave, {}, nullptr);
}

} // namespace

const Opcode* findOpcode(const std::string& name)
{
    static const Table& table = *new Table; // never destroyed: a kernel may run until the process ends
    return table.find(name);
}

} // namespace tarn::ptx
