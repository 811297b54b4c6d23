#pragma once
/// PTX in the form in which it runs.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarn::ptx {

class ThreadBlock;
struct Instruction;

/// A type of PTX, such as f32 or pred.
struct Type
{
    char kind = 0; ///< the letter: b, s, u, f, or p of pred
    int bytes = 0;
};

/// The operands of an instruction.
enum class Form
{
    compute, ///< destination, sources
    load,    ///< destinations, address
    store,   ///< address, sources
    atomic,  ///< destination, address, source
    branch,  ///< label
    barrier, ///< number of the barrier
    leave    ///< none
};

/// One line of the table of instructions.
struct Opcode
{
    Form form;
    std::vector<Type> operands; ///< of `compute` all, else the one type of the data
    std::function<void(ThreadBlock&, const Instruction&)>
        execute;         ///< for the active threads; empty where the control flow is all
    bool global = false; ///< reads or writes device memory
};

/// Registers and constants are rows with a place for each thread.
struct Row
{
    int bytes;               ///< of one thread's value
    std::int64_t offset = 0; ///< bytes per thread that stand before it
};

struct Instruction
{
    const Opcode* opcode;
    std::vector<int> rows;   ///< of the data operands: destinations first, then sources
    int address = -1;        ///< row of the address; -1: `offset` is all of it
    std::int64_t offset = 0; ///< bytes
    int predicate = -1;      ///< row; -1: always
    bool negated = false;    ///< of the predicate
    int target = -1;         ///< of a branch: an instruction's number
    int line = 0;            ///< in the PTX text, counted from 1
    int source = -1;         ///< index of the module's source lines; -1: unknown
};

struct Constant
{
    int row;
    std::uint64_t bits;
};

struct Parameter
{
    std::string name;
    std::int64_t offset, bytes;
};

struct Module;

struct Kernel
{
    const Module* module;
    std::string name; ///< as the linker knows it
    std::vector<Parameter> parameters;
    std::int64_t parameterBytes = 0, sharedBytes = 0, localBytes = 0; ///< localBytes: of one thread
    std::vector<Row> rows;
    std::int64_t rowBytes = 0; ///< of all rows of one thread
    std::vector<Constant> constants;
    std::map<std::string, int> special; ///< rows of %tid.x and its like
    std::vector<Instruction> code;
};

struct Module
{
    std::vector<std::string> lines;   ///< the text
    std::vector<std::string> sources; ///< FILE:LINE, from .loc
    std::map<std::string, Kernel> kernels;
};

/// What the text has that is not known here, with kernel and line.
class ParseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Parses a PTX text. Throws ParseError.
std::unique_ptr<const Module> parse(const std::string& text);

/// The instruction of that name; null if there is none. Vector loads and stores stand under the names without .v2, .v4.
const Opcode* findOpcode(const std::string& name);

} // namespace tarn::ptx
