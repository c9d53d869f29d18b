// qms: the command line face of Quilmoor Studio.

#include "QmsCommands.h"
#include "core/DB_Exception.h"

#include <cstring>
#include <iostream>

namespace {

void PrintUsage(std::ostream& out) {
    out << "usage: qms [--json] COMMAND [ARGUMENTS...]\n\ncommands:\n";
    for (const QmsCommand& command : QmsCommandTable())
        out << "  " << command.usage << "\n      " << command.summary << "\n";
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    QmsContext context{std::cout, std::cerr};
    // --json may stand anywhere; the sub-commands never see it.
    std::erase_if(words, [&](const std::string& w) {
        if (w == "--json") {
            context.json = true;
            return true;
        }
        return false;
    });
    if (words.empty() || words[0] == "help" || words[0] == "--help" || words[0] == "-h") {
        PrintUsage(words.empty() ? std::cerr : std::cout);
        return words.empty() ? 2 : 0;
    }
    if (words[0] == "--version") {
        std::cout << "qms (Quilmoor Studio) 2.0\n";
        return 0;
    }
    QmsRegisterAllTypes();
    QmsMessageHandler handler(std::cerr);
    UT_MessageHandlerScope scope(&handler);
    for (const QmsCommand& command : QmsCommandTable()) {
        if (words[0] != command.name)
            continue;
        const std::vector<std::string> rest(words.begin() + 1, words.end());
        try {
            return command.run(context, rest);
        } catch (const QmsUsageError& e) {
            std::cerr << "qms " << command.name << ": " << e.what() << "\nusage: " << command.usage << "\n";
            return 2;
        } catch (const QmsFailure& e) {
            if (*e.what())
                std::cerr << e.what() << "\n";
            return 1;
        } catch (const DB_Exception& e) {
            std::cerr << e.what() << "\n";
            return 1;
        } catch (const std::bad_alloc&) {
            std::cerr << "Out of memory\n";
            return 1;
        } catch (const std::exception& e) {
            std::cerr << "qms " << command.name << ": " << e.what() << "\n";
            return 1;
        }
    }
    std::cerr << "qms: unknown command '" << words[0] << "'\n";
    PrintUsage(std::cerr);
    return 2;
}
