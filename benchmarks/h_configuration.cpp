// h. Configuring from a document of 9 KB with 30 loggers and 10 appenders, again and again, against what it takes to
// parse it and to look at every attribute.

#include <fstream>
#include <sstream>
#include <string>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "benchmarks/Harness.h"
#include "log4vrk/log4vrk.h"

namespace {

void writeDocument(const std::string& path, const std::string& folder) {
  std::ostringstream out;
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log4j:configuration>\n";
  for (int i = 0; i < 10; ++i) {
    out << "  <!-- Everything that part " << i << " of the server has to say. -->\n  <appender name=\"file" << i
        << "\" class=\"RollingFileAppender\">\n    <param name=\"File\" value=\"" << folder << "/part" << i
        << ".log\"/>\n    <param name=\"MaximumFileSize\" value=\"10485760\"/>\n"
        << "    <param name=\"MaxBackupIndex\" value=\"5\"/>\n    <layout class=\"PatternLayout\">\n"
        << "      <param name=\"ConversionPattern\" value=\"%d [%t] %-5p %c - %m%n\"/>\n    </layout>\n"
        << "    <filter class=\"LevelRangeFilter\">\n      <param name=\"LevelMin\" value=\"DEBUG\"/>\n    </filter>\n"
        << "  </appender>\n";
  }
  for (int i = 0; i < 30; ++i) {
    out << "  <logger name=\"com.acme.server.part" << i % 10 << ".component" << i << "\" additivity=\"false\">\n"
        << "    <level value=\"" << (i % 2 == 0 ? "INFO" : "DEBUG") << "\"/>\n    <appender-ref ref=\"file" << i % 10
        << "\"/>\n  </logger>\n";
  }
  out << "  <root>\n    <level value=\"WARN\"/>\n    <appender-ref ref=\"file0\"/>\n  "
         "</root>\n</log4j:configuration>\n";
  std::ofstream(path) << out.str();
}

std::size_t attributesBelow(const xercesc::DOMNode& node) {
  std::size_t length = 0;
  if (const xercesc::DOMNamedNodeMap* const attributes = node.getAttributes()) {
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      length += xercesc::XMLString::stringLen(attributes->item(i)->getNodeValue());
    }
  }
  for (const xercesc::DOMNode* child = node.getFirstChild(); child != nullptr; child = child->getNextSibling()) {
    length += attributesBelow(*child);
  }
  return length;
}

std::size_t parse(const std::string& path) {
  xercesc::XercesDOMParser parser;
  parser.setLoadExternalDTD(false);
  parser.parse(path.c_str());
  return attributesBelow(*parser.getDocument());
}

// The same document with a variable in each value.
void writeDocumentWithVariables(const std::string& from, const std::string& path) {
  std::stringstream text;
  text << std::ifstream(from).rdbuf();
  std::string document = text.str();
  const auto replace = [&document](const std::string& what, const std::string& with) {
    for (std::size_t at = 0; (at = document.find(what, at)) != document.npos; at += with.size()) {
      document.replace(at, what.size(), with);
    }
  };
  replace("<log4j:configuration", "<log4j:configuration substitute=\"true\"");
  replace("value=\"", "value=\"${LOG4VRK_BENCH:-}");
  std::ofstream(path) << document;
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  xercesc::XMLPlatformUtils::Initialize();
  {
    bench::Folder folder;
    const std::string document = folder.newFile();
    writeDocument(document, folder.path());
    const std::string withVariables = document + ".variables";
    writeDocumentWithVariables(document, withVariables);
    const long runs = settings.count(400);
    const auto microseconds = [runs](auto run) {
      return bench::seconds(1, runs, run) * 1e6 / static_cast<double>(runs);
    };
    LOG4VRKConfigurator::initialize(document.c_str());

    bench::Comparison comparison(settings, {{"h", "us"}});
    std::size_t seen = 0;
    comparison.add("parse and walk", [&] { return microseconds([&](long) { seen += parse(document); }); });
    comparison.add("ours",
                   [&] { return microseconds([&](long) { LOG4VRKConfigurator::initialize(document.c_str()); }); });
    comparison.add("with variables",
                   [&] { return microseconds([&](long) { LOG4VRKConfigurator::initialize(withVariables.c_str()); }); });
    comparison.gate("h", "ours", "parse and walk", bench::Comparison::AT_MOST, 1.4);
    comparison.run();
    LOG4VRKConfigurator::shutdown();
    if (seen == 0) return 1;
  }
  xercesc::XMLPlatformUtils::Terminate();
}
