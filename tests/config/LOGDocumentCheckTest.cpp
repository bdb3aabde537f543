#include "tests/config/DocumentTable.h"
#include "tests/config/DocumentTrial.h"
#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

struct DocumentCheckTest : testing::Test {
  DocumentCheckTest() {
    std::filesystem::create_directories(dir.file("work"));
    std::filesystem::current_path(dir.file("work"));
  }
  ~DocumentCheckTest() override { std::filesystem::current_path("/"); }

  std::string write(const std::string& document) { return dir.write("log.xml", document); }

  static std::string namesOf(const std::vector<LOGFinding>& findings) {
    std::string names;
    for (const LOGFinding& finding : findings) {
      names += std::string(names.empty() ? "" : " ") + "NWE"[finding.severity] + " " + finding.name;
    }
    return names;
  }

  // Where the library and the check do not say the same of a document; empty where they agree.
  std::string disagreement(const std::string& path) {
    const LOGDocumentCheck check(path.c_str());
    clear();
    const Quiet quiet;
    DocumentTrial trial(path);
    const std::string said = namesOf(check.findings());
    if (check.count(LOGFinding::WARNING) == 0) {
      return trial.isWhole() ? "" : "silent [" + said + "], but the library: " + trial.problems() + trial.complaints();
    }
    for (const LOGFinding& finding : check.findings()) {
      if (finding.severity != LOGFinding::FAULT || trial.result() != 1) continue;
      const std::string begin = "appender [", appender = finding.where.substr(0, finding.where.find(']'));
      const bool isAppender = appender.rfind(begin, 0) == 0;
      const bool isUnconfigured = isAppender ? !trial.works(appender.substr(begin.size())) : !trial.isWhole();
      if (!isUnconfigured && !isIgnored(path, finding, trial)) return finding.name + ", but the library has no trouble";
    }
    return "";
  }

  // Whether the element makes no difference: without it the library does the same.
  static bool isIgnored(const std::string& path, const LOGFinding& finding, DocumentTrial& trial) {
    VRKIDOM_Document document = VRKIDOM_Parser().parse(path.c_str());
    const VRKIDOM_NodeList all = document.getElementsByTagName("*");
    for (long i = 1; i < all.getLength(); ++i) {
      const VRKIDOM_Node element = all.item(i);
      if (element.getLineNumber() != finding.line || element.getColumnNumber() != finding.column) continue;
      document.createElement("gone").appendChild(element);
      return DocumentTrial(document).state() == trial.state();
    }
    return false;
  }

  // Names, and values in their quotes, but not those of files.
  static std::vector<std::pair<std::size_t, std::size_t>> wordsIn(const std::string& document) {
    constexpr char LETTERS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789:-";
    std::vector<std::pair<std::size_t, std::size_t>> words;
    for (std::size_t at = 0, end; at < document.size(); at = end) {
      const bool isValue = document[at] == '\'';
      end = isValue ? document.find('\'', at + 1) + 1
                    : std::min(document.find_first_not_of(LETTERS, at), document.size());
      const bool isFile = document.substr(at, end - at).find('/') != std::string::npos;
      if (end == at)
        ++end;
      else if (!isFile)
        words.emplace_back(at, end - at);
    }
    return words;
  }

  void clear() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.path())) {
      if (entry.is_regular_file() && entry.path().extension() != ".xml") std::filesystem::remove(entry.path());
    }
  }

  // Console appenders write into the void meanwhile.
  struct Quiet {
    Quiet() { ::dup2(::fileno(m_nowhere.get()), 1); }
    ~Quiet() { ::dup2(m_output, 1), ::close(m_output); }
    const int m_output = (std::fflush(stdout), ::dup(1));
    const std::unique_ptr<FILE, int (*)(FILE*)> m_nowhere{std::fopen("/dev/null", "w"), std::fclose};
  };

  TempDir dir;
};

// Where it says error, the library does not configure that piece, and where it says nothing, everything works.
TEST_F(DocumentCheckTest, FindsWhatTheTableSaysAndTheLibraryDoes) {
  for (const auto& [findings, document] : checkedDocuments(dir.path())) {
    const std::string path = write(document);
    EXPECT_EQ(findings, namesOf(LOGDocumentCheck(path.c_str()).findings())) << document;
    EXPECT_EQ("", disagreement(path)) << document;
  }
}

TEST_F(DocumentCheckTest, ChangesNothing) {
  LOG4VRKConfigurator::initialize("missing.xml");
  const I18NString problems = LOG4VRKConfigurator::getProblems();
  const InternalLog log;
  const std::string path = write(
      expand("$W$F<layout class='PatternLayout'>$P(ConversionPattern=%y)</layout>$P(Append=false)$E$R", dir.path()));
  const LOGDocumentCheck check(path.c_str());
  EXPECT_EQ(3U, check.findings().size()) << namesOf(check.findings());
  EXPECT_TRUE(check.sample().find("a: %y") == 0 && !check.dump().empty());
  EXPECT_EQ("", log.text()) << "what it tries is no matter of the internal log";
  EXPECT_EQ(problems, LOG4VRKConfigurator::getProblems());
  EXPECT_FALSE(std::filesystem::exists(dir.file("a.log")));
}

TEST_F(DocumentCheckTest, HasFaultyDocumentsRefusedWhenTheProgramWantsThat) {
  const std::string faulty = write(
      expand("$A<root><level value='FATAL'/><appender-ref ref='a'/>\n<appender-ref ref='b'/></root>", dir.path()));
  LOG4VRKConfigurator::setRefuseFaultyDocuments(1);
  const InternalLog log;
  EXPECT_EQ(0, LOG4VRKConfigurator::initialize(faulty.c_str()));
  EXPECT_TRUE(*LOGManager::getRootLogger()->getLevel() == *LOGLevel::DEBUG_OBJ) << "nothing has changed";
  const std::string problems = LOG4VRKConfigurator::getProblems().toUtf8();
  EXPECT_EQ(0U, problems.find(faulty + ":2: LOG4VRKConfigurator::initialize -- root: ref=\"b\": there is no appender"));
  EXPECT_EQ(2, log.count("log4vrk:ERROR LOG4VRKConfigurator::initialize -- ")) << log.text();
  EXPECT_EQ(0, LOG4VRKConfigurator::initialize("missing.xml"));
  EXPECT_EQ(0U, LOG4VRKConfigurator::getProblems().toUtf8().find("missing.xml: Could not parse the document "));
  LOG4VRKConfigurator::setRefuseFaultyDocuments(0);
  EXPECT_EQ(1, LOG4VRKConfigurator::initialize(faulty.c_str())) << "off, as at first";
  LOGManager::getRootLogger()->removeAllAppenders();
}

struct MutatedDocuments : DocumentCheckTest, testing::WithParamInterface<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Seeds, MutatedDocuments, testing::Range(0U, 10U));

// Good documents with a slip of the hand in each, from a generator with a fixed seed.
TEST_P(MutatedDocuments, AreJudgedAsTheLibraryTakesThem) {
  std::vector<std::string> good;
  for (const auto& [findings, document] : checkedDocuments(dir.path())) {
    if (findings.empty() && document.find("TCP") == document.npos) good.push_back(document);
  }
  std::mt19937 random(20261122 + GetParam());
  const auto pick = [&](std::size_t size) { return std::uniform_int_distribution<std::size_t>(0, size - 1)(random); };
  int silent = 0, faulty = 0;
  for (int i = 0; i < 200; ++i) {
    std::string document = good[pick(good.size())];
    const std::vector<std::pair<std::size_t, std::size_t>> words = wordsIn(document);
    const auto [at, length] = words[pick(words.size())];
    const std::size_t quotes = document[at] == '\'' ? 1 : 0;
    const std::string text = document.substr(at + quotes, length - 2 * quotes);
    std::string lower = text;
    for (char& c : lower) c = static_cast<char>(std::isupper(static_cast<unsigned char>(c)) ? std::tolower(c) : c);
    const std::string slips[] = {text.substr(0, text.size() - (text.size() > 1 ? 1 : 0)),
                                 text + "xX1 L"[pick(quotes == 1 ? 5 : 2)], lower, quotes == 1 ? "" : text,
                                 quotes == 1 ? "WARN" : "root"};
    document.replace(at + quotes, text.size(), slips[pick(std::size(slips))]);
    const std::string path = write(document);
    ASSERT_EQ("", disagreement(path)) << "mutation " << i << ": " << document;
    const LOGDocumentCheck check(path.c_str());
    silent += check.count(LOGFinding::WARNING) == 0 ? 1 : 0;
    faulty += check.count(LOGFinding::FAULT) > 0 ? 1 : 0;
  }
  EXPECT_TRUE(silent > 10 && faulty > 50) << silent << " silent, " << faulty << " with errors: both sides are tried";
}

TEST_F(DocumentCheckTest, SeesFilesAsTheUserDoesWhoRunsIt) {
  const std::string file = dir.write("work/a.log", "");
  const std::string path = write(expand("$W$P(File=" + file + ")$L$E$R", dir.path()));
  for (const std::string& each : {dir.path(), dir.file("work")}) ASSERT_EQ(0, ::chmod(each.c_str(), 0755));
  ASSERT_EQ(0, ::chmod(file.c_str(), 0444));
  const bool root = ::geteuid() == 0;  // who may write to everything
  if (root) {
    EXPECT_EQ("", namesOf(LOGDocumentCheck(path.c_str()).findings()));
    ASSERT_EQ(0, ::seteuid(65534));
  }
  const std::string names = namesOf(LOGDocumentCheck(path.c_str()).findings());
  EXPECT_TRUE(!root || ::seteuid(0) == 0);
  EXPECT_NE(std::string::npos, names.find("E file-not-writable")) << names;
}

}  // namespace
