/// From PTX text to a Module. What is not understood is an error, never skipped.

#include "program.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <sstream>
#include <unordered_map>

namespace tarn::ptx {

namespace {

bool startsWith(const std::string& text, const char* start) { return text.compare(0, std::strlen(start), start) == 0; }

/// Space around a text, and a comment behind it, away; tabs are spaces.
std::string stripped(std::string line)
{
    line.erase(std::min(line.find("//"), line.size()));
    std::replace(line.begin(), line.end(), '\t', ' ');
    const auto begin = line.find_first_not_of(" \r");
    return begin == std::string::npos ? "" : line.substr(begin, line.find_last_not_of(" \r") - begin + 1);
}

std::vector<std::string> split(const std::string& text, const char* separators)
{
    std::vector<std::string> words;
    for (std::size_t at = 0; (at = text.find_first_not_of(separators, at)) != std::string::npos;) {
        const auto end = std::min(text.find_first_of(separators, at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end;
    }
    return words;
}

/// The operands of an instruction: split at the commas that stand outside of braces.
std::vector<std::string> splitOperands(const std::string& text)
{
    std::vector<std::string> operands(1);
    int depth = 0;
    for (const char c : text) {
        depth += c == '{' ? 1 : c == '}' ? -1 : 0;
        if (c == ',' && depth == 0)
            operands.emplace_back();
        else if (c != ' ')
            operands.back() += c;
    }
    if (operands.back().empty())
        operands.pop_back();
    return operands;
}

std::int64_t roundUp(std::int64_t bytes, std::int64_t alignment)
{
    return (bytes + alignment - 1) / alignment * alignment;
}

/// A variable of shared or local memory, or a parameter.
struct Variable
{
    std::string name;
    std::int64_t alignment = 1, bytes = 0;
};

class Parser
{
public:
    explicit Parser(const std::string& text) : module_(std::make_unique<Module>())
    {
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);)
            module_->lines.push_back(stripped(line));
    }

    std::unique_ptr<const Module> run()
    {
        while (next()) {
            if (startsWith(line_, ".shared"))
                declare(shared_);
            else if (line_.find(".entry ") != std::string::npos)
                kernel();
            else if (startsWith(line_, ".file"))
                file();
            else if (startsWith(line_, ".section"))
                skipSection();
            else if (!startsWith(line_, ".version") && !startsWith(line_, ".target") &&
                     !startsWith(line_, ".address_size"))
                fail("a directive that is not known");
        }
        for (auto& [name, kernel] : module_->kernels)
            kernel.module = module_.get();
        for (const auto& [kernel, locations] : pendingSources_)
            resolveSources(module_->kernels.at(kernel), locations);
        return std::move(module_);
    }

private:
    [[noreturn]] void fail(const std::string& what) const
    {
        throw ParseError("ptx line " + std::to_string(number_) + (kernel_ ? " of " + kernel_->name : "") + ": " + what +
                         ": " + line_);
    }

    /// The next line that says something.
    bool next()
    {
        while (number_ < int(module_->lines.size())) {
            line_ = module_->lines[std::size_t(number_++)];
            if (!line_.empty())
                return true;
        }
        return false;
    }

    // ---- directives ----------------------------------------------------------------------------------------------

    Type type(const std::string& name) const
    {
        static const std::map<std::string, int> bytes = {{"8", 1}, {"16", 2}, {"32", 4}, {"64", 8}};
        if (name == "pred")
            return {'p', 1};
        const auto found = bytes.find(name.substr(std::min<std::size_t>(1, name.size())));
        if (found == bytes.end() || !std::strchr("bsuf", name[0]))
            fail("a type that is not known");
        return {name[0], found->second};
    }

    /// .space .align N .type name[count]
    Variable variable() const
    {
        Variable result;
        std::int64_t element = 1;
        const auto words = split(line_, " ;,");
        for (std::size_t i = 1; i < words.size(); ++i) {
            if (words[i] == ".align")
                result.alignment = std::stoll(words.at(++i));
            else if (words[i] == ".ptr")
                i += words.at(i + 1) == ".align" ? 2 : words.at(i + 2) == ".align" ? 3 : 0; // says what it points to
            else if (words[i][0] == '.')
                element = type(words[i].substr(1)).bytes;
            else {
                const auto open = words[i].find('[');
                result.name = words[i].substr(0, open);
                result.bytes = element * (open == std::string::npos ? 1 : std::stoll(words[i].substr(open + 1)));
            }
        }
        result.alignment = std::max(result.alignment, element);
        return result;
    }

    void declare(std::unordered_map<std::string, Variable>& variables) const
    {
        const Variable declared = variable();
        variables[declared.name] = declared;
    }

    /// .file N "name"
    void file()
    {
        const auto words = split(line_, " ,");
        files_[words.at(1)] = words.at(2).substr(1, words.at(2).size() - 2);
    }

    /// .loc FILE LINE COLUMN [, function_name NAME, inlined_at FILE LINE COLUMN]: where the instructions that follow
    /// stand in the source. Files are named at the end of the text.
    struct Location
    {
        std::string file, line, callerFile, callerLine;
    };

    void location()
    {
        const auto words = split(line_, " ,");
        Location result{words.at(1), words.at(2), "", ""};
        const auto inlined = std::find(words.begin(), words.end(), "inlined_at");
        if (words.end() - inlined > 2)
            result.callerFile = inlined[1], result.callerLine = inlined[2];
        locations_.push_back(result);
    }

    void resolveSources(Kernel& kernel, const std::vector<Location>& locations)
    {
        const int first = int(module_->sources.size());
        for (const Location& at : locations)
            module_->sources.push_back(
                files_[at.file] + ":" + at.line +
                (at.callerFile.empty() ? "" : ", called from " + files_[at.callerFile] + ":" + at.callerLine));
        for (Instruction& instruction : kernel.code)
            if (instruction.source >= 0)
                instruction.source += first;
    }

    /// Debugging sections: names of inlined functions.
    void skipSection()
    {
        while (line_.find('}') == std::string::npos)
            if (!next())
                return;
    }

    // ---- kernels -------------------------------------------------------------------------------------------------

    void kernel()
    {
        const auto begin = line_.find(".entry ") + std::strlen(".entry ");
        const std::string name = line_.substr(begin, line_.find_first_of("( ", begin) - begin);
        kernel_ = &module_->kernels[name];
        kernel_->name = name;
        registers_.clear(), labels_.clear(), constants_.clear(), placed_.clear(), jumps_.clear(), locations_.clear();
        while (next() && line_ != "{")
            header();
        while (next() && line_ != "}")
            statement();
        for (const auto& [jump, label] : jumps_) {
            if (!labels_.count(label))
                fail("no label " + label);
            kernel_->code[jump].target = labels_[label];
        }
        placeRows();
        pendingSources_.emplace_back(name, locations_);
        kernel_ = nullptr;
    }

    void header()
    {
        if (startsWith(line_, ".param")) {
            const Variable declared = variable();
            const std::int64_t offset = roundUp(kernel_->parameterBytes, declared.alignment);
            kernel_->parameters.push_back({declared.name, offset, declared.bytes});
            kernel_->parameterBytes = offset + declared.bytes;
        } else if (line_ != "(" && line_ != ")" && !startsWith(line_, ".maxntid") &&
                   !startsWith(line_, ".minnctapersm")) {
            fail("not known in the head of a kernel");
        }
    }

    void statement()
    {
        if (line_.back() == ':')
            labels_[line_.substr(0, line_.size() - 1)] = int(kernel_->code.size());
        else if (startsWith(line_, ".reg"))
            declareRegisters();
        else if (startsWith(line_, ".loc "))
            location();
        else if (startsWith(line_, ".shared"))
            declare(shared_);
        else if (startsWith(line_, ".local")) {
            const Variable declared = variable();
            place(declared, kernel_->localBytes);
        } else if (line_[0] != '.')
            instruction();
        else if (!startsWith(line_, ".pragma"))
            fail("a directive that is not known");
    }

    /// .reg .type %name<count>, or names one by one
    void declareRegisters()
    {
        const auto words = split(line_, " ;,");
        const int bytes = type(words.at(1).substr(1)).bytes;
        for (std::size_t i = 2; i < words.size(); ++i)
            registerBytes_[words[i].substr(0, words[i].find('<'))] = bytes;
    }

    /// Rows of wide values first, so that each is aligned.
    void placeRows()
    {
        for (const int bytes : {8, 4, 2, 1})
            for (Row& row : kernel_->rows)
                if (row.bytes == bytes) {
                    row.offset = kernel_->rowBytes;
                    kernel_->rowBytes += bytes;
                }
    }

    // ---- operands ------------------------------------------------------------------------------------------------

    int newRow(int bytes)
    {
        kernel_->rows.push_back({bytes});
        return int(kernel_->rows.size()) - 1;
    }

    int registerRow(const std::string& name)
    {
        const auto [entry, fresh] = registers_.try_emplace(name, 0);
        if (!fresh)
            return entry->second;
        static const char* const places[] = {"%tid.", "%ntid.", "%ctaid.", "%nctaid."};
        const bool special = std::any_of(std::begin(places), std::end(places),
                                         [&](const char* place) { return startsWith(name, place); });
        const std::string family = name.substr(0, name.find_first_of("0123456789"));
        const auto declared = registerBytes_.find(registerBytes_.count(name) ? name : family);
        if (!special && declared == registerBytes_.end())
            fail("no register " + name);
        entry->second = newRow(special ? 4 : declared->second);
        if (special)
            kernel_->special[name] = entry->second;
        return entry->second;
    }

    int constant(std::uint64_t bits, int bytes)
    {
        const auto [entry, fresh] = constants_.try_emplace({bits, bytes}, 0);
        if (fresh) {
            entry->second = newRow(bytes);
            kernel_->constants.push_back({entry->second, bits});
        }
        return entry->second;
    }

    std::int64_t place(const Variable& variable, std::int64_t& total)
    {
        const std::int64_t offset = roundUp(total, variable.alignment);
        placed_[variable.name] = offset;
        total = offset + variable.bytes;
        return offset;
    }

    /// Whether the name is a parameter or a variable of shared or local memory, and its offset there.
    bool findVariable(const std::string& name, std::int64_t& offset)
    {
        for (const Parameter& parameter : kernel_->parameters)
            if (parameter.name == name) {
                offset = parameter.offset;
                return true;
            }
        const auto placed = placed_.find(name);
        const auto shared = shared_.find(name);
        if (placed == placed_.end() && shared == shared_.end())
            return false;
        offset = placed != placed_.end() ? placed->second : place(shared->second, kernel_->sharedBytes);
        return true;
    }

    std::uint64_t literal(const std::string& text, Type expected) const
    {
        std::size_t used = 0;
        std::uint64_t bits = 0;
        try {
            const int floating = startsWith(text, "0f") ? 4 : startsWith(text, "0d") ? 8 : 0; // bytes
            if (floating != 0 ? floating != expected.bytes : expected.kind == 'f')
                fail("a literal of another type");
            if (floating != 0)
                bits = std::stoull(text.substr(2), &used, 16), used += 2;
            else if (text[0] == '-')
                bits = std::uint64_t(std::stoll(text, &used, 0));
            else
                bits = std::stoull(text, &used, 0);
        } catch (const std::logic_error&) {
            fail("an operand that is not known");
        }
        if (used != text.size())
            fail("an operand that is not known");
        return bits;
    }

    /// Row of an operand. Memory instructions take registers that are wider than their type.
    int operand(const std::string& text, Type expected, bool mayBeWider)
    {
        std::int64_t offset = 0;
        if (text[0] != '%')
            return constant(findVariable(text, offset) ? std::uint64_t(offset) : literal(text, expected),
                            expected.bytes);
        const int row = registerRow(text);
        const int bytes = kernel_->rows[std::size_t(row)].bytes;
        if (mayBeWider ? bytes < expected.bytes : bytes != expected.bytes)
            fail("the width of register " + text);
        return row;
    }

    /// [base], [base+offset]; the base is a register, a parameter or a variable.
    void address(const std::string& text, Instruction& instruction)
    {
        if (text.size() < 3 || text.front() != '[' || text.back() != ']')
            fail("an address that is not known");
        std::string base = text.substr(1, text.size() - 2);
        if (const auto sign = base.find_first_of("+-", 1); sign != std::string::npos) {
            instruction.offset = std::stoll(base.substr(sign + (base[sign] == '+')));
            base.erase(sign);
        }
        std::int64_t offset = 0;
        if (base[0] == '%') {
            instruction.address = registerRow(base);
        } else if (findVariable(base, offset)) {
            instruction.offset += offset;
        } else {
            fail("no variable " + base);
        }
    }

    void data(const std::string& text, int count, Instruction& instruction)
    {
        const auto words = split(text, "{},");
        if (int(words.size()) != count)
            fail("the number of elements");
        for (const std::string& word : words)
            instruction.rows.push_back(operand(word, instruction.opcode->operands.at(0), true));
    }

    // ---- instructions --------------------------------------------------------------------------------------------

    void instruction()
    {
        if (line_.back() != ';')
            fail("an instruction without an end");
        Instruction result;
        result.line = number_;
        result.source = int(locations_.size()) - 1;
        std::string rest = line_.substr(0, line_.size() - 1);
        if (rest[0] == '@') {
            result.negated = rest[1] == '!';
            const auto end = rest.find_first_of(" ");
            result.predicate = operand(rest.substr(1 + result.negated, end - 1 - result.negated), {'p', 1}, false);
            rest = stripped(rest.substr(end));
        }
        const auto end = std::min(rest.find_first_of(" "), rest.size());
        std::string name = rest.substr(0, end);
        int count = 1;
        for (const int width : {2, 4})
            if (const auto vector = name.find(".v" + std::to_string(width) + "."); vector != std::string::npos) {
                count = width;
                name.erase(vector, 3);
            }
        result.opcode = findOpcode(name);
        if (!result.opcode)
            fail("an instruction that is not known");
        operands(splitOperands(rest.substr(end)), count, result);
        kernel_->code.push_back(std::move(result));
    }

    void operands(const std::vector<std::string>& texts, int count, Instruction& instruction)
    {
        const Opcode& opcode = *instruction.opcode;
        static const std::map<Form, std::size_t> counts = {{Form::load, 2},   {Form::store, 2},   {Form::atomic, 3},
                                                           {Form::branch, 1}, {Form::barrier, 1}, {Form::leave, 0}};
        const std::size_t expected = opcode.form == Form::compute ? opcode.operands.size() : counts.at(opcode.form);
        if (texts.size() != expected)
            fail("the number of operands");
        switch (opcode.form) {
        case Form::compute:
            for (std::size_t i = 0; i < texts.size(); ++i)
                instruction.rows.push_back(operand(texts[i], opcode.operands[i], false));
            break;
        case Form::load:
            data(texts[0], count, instruction);
            address(texts[1], instruction);
            break;
        case Form::store:
            address(texts[0], instruction);
            data(texts[1], count, instruction);
            break;
        case Form::atomic:
            data(texts[0], 1, instruction);
            address(texts[1], instruction);
            data(texts[2], 1, instruction);
            break;
        case Form::branch:
            jumps_.emplace_back(kernel_->code.size(), texts[0]);
            break;
        case Form::barrier:
            if (texts[0] != "0")
                fail("a barrier other than 0");
            break;
        case Form::leave:
            break;
        }
    }

    std::unique_ptr<Module> module_;
    std::string line_;
    int number_ = 0;
    Kernel* kernel_ = nullptr;
    std::unordered_map<std::string, std::string> files_;
    std::unordered_map<std::string, Variable> shared_; ///< of the module; a kernel holds those that it names
    std::vector<std::pair<std::string, std::vector<Location>>> pendingSources_;

    // Of the kernel that is being parsed.
    std::unordered_map<std::string, int> registerBytes_, registers_, labels_;
    std::map<std::pair<std::uint64_t, int>, int> constants_;
    std::unordered_map<std::string, std::int64_t> placed_;
    std::vector<std::pair<std::size_t, std::string>> jumps_;
    std::vector<Location> locations_;
};

} // namespace

std::unique_ptr<const Module> parse(const std::string& text) { return Parser(text).run(); }

} // namespace tarn::ptx
