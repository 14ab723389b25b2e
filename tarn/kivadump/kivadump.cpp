#include "tarn/kivadump/kivadump.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/kivadump/kiva_json_printer.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/kivadump/kiva_text_printer.h"
#include "tarn/kivadump/texture_extractor.h"

namespace tarn::kivaread {

namespace {

struct Options {
    bool json = false;
    bool help = false;
    std::string extractDirectory;
    std::string file;
};

// Gives an empty string for good options, else the problem.
std::string parseOptions(std::span<const char* const> args, Options& options) {
    bool haveFile = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string_view arg = args[i];
        if (arg == "--json") {
            options.json = true;
        } else if (arg == "--help" || arg == "-h") {
            options.help = true;
        } else if (arg == "--extract-textures") {
            if (i + 1 >= args.size()) return "--extract-textures needs a directory";
            options.extractDirectory = args[++i];
            if (options.extractDirectory.empty()) return "--extract-textures needs a directory";
        } else if (arg.size() > 1 && arg[0] == '-') {
            return "unknown option " + std::string(arg);
        } else if (haveFile) {
            return "only one file can be dumped at a time";
        } else {
            options.file = arg;
            haveFile = true;
        }
    }
    if (!haveFile && !options.help) return "no file given";
    return std::string();
}

// Reads a regular file in one piece and anything else (a pipe, a device) in
// chunks until its end. Directories and unreadable files give false.
bool readWholeFile(const std::string& path, std::vector<std::uint8_t>& bytes) {
    std::error_code code;
    const std::filesystem::file_status status = std::filesystem::status(path, code);
    if (code || std::filesystem::is_directory(status)) return false;
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    if (std::filesystem::is_regular_file(status)) {
        const std::uintmax_t size = std::filesystem::file_size(path, code);
        if (code) return false;
        bytes.resize(std::size_t(size));
        in.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(size));
        if (std::uintmax_t(in.gcount()) != size) return false;
        return in.peek() == std::ifstream::traits_type::eof();  // the file grew while read: a torn copy
    }
    char chunk[65536];
    while (in.read(chunk, sizeof chunk) || in.gcount() > 0) bytes.insert(bytes.end(), chunk, chunk + in.gcount());
    return !in.bad();
}

}  // namespace

int runKivadump(std::span<const char* const> args, std::ostream& out, std::ostream& err) {
    Options options;
    const std::string problem = parseOptions(args, options);
    if (!problem.empty()) {
        err << "kivadump: " << problem << '\n' << kKivadumpUsage << '\n';
        return 2;
    }
    if (options.help) {
        out << kKivadumpUsage << '\n';
        return 0;
    }

    std::vector<std::uint8_t> bytes;
    if (!readWholeFile(options.file, bytes)) {
        err << "kivadump: " << options.file << ": cannot read the file\n";
        return 1;
    }
    KivaReader reader(bytes);
    KivaFile file;
    if (!reader.read(file)) {
        err << "kivadump: " << options.file << ": " << reader.fault() << '\n';
        return 1;
    }
    if (options.json)
        printKivaJson(file, out);
    else
        printKivaText(file, out);
    out.flush();

    if (!options.extractDirectory.empty()) {
        std::string error;
        if (!extractTextures(file, options.extractDirectory, error)) {
            err << "kivadump: " << error << '\n';
            return 1;
        }
    }
    return 0;
}

}  // namespace tarn::kivaread
