#include "tarn/kivadump/kivadump.h"

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

bool readWholeFile(const std::string& path, std::vector<std::uint8_t>& bytes) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) return false;
  const std::streamoff size = in.tellg();
  if (size < 0) return false;
  bytes.resize(std::size_t(size));
  in.seekg(0);
  return bool(in.read(reinterpret_cast<char*>(bytes.data()), size));
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
