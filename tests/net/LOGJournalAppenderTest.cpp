#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "tests/support/Tests.h"

using namespace vrktest;
using namespace std::string_literals;

namespace {

/// A journal of the test's own: a socket that entries come to.
class Journal {
 public:
  explicit Journal(const std::string& path) : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  ~Journal() { ::close(m_socket); }

  /// The next entry as it came, and in `seals` those of its file, -1 for a datagram. "(nothing)": there is none.
  std::string next(int* seals = nullptr) const {
    pollfd ready{m_socket, POLLIN, 0};
    if (::poll(&ready, 1, 0) != 1) return "(nothing)";
    std::string bytes(300000, '\0');
    iovec room = {bytes.data(), bytes.size()};
    alignas(cmsghdr) char control[64] = {};
    msghdr message = {};
    message.msg_iov = &room, message.msg_iovlen = 1;
    message.msg_control = control, message.msg_controllen = sizeof control;
    bytes.resize(static_cast<std::size_t>(::recvmsg(m_socket, &message, 0)));
    if (seals != nullptr) *seals = -1;
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header == nullptr) return bytes;
    EXPECT_EQ(bytes, "") << "either a payload or a file";
    int file = -1;
    std::memcpy(&file, CMSG_DATA(header), sizeof file);
    if (seals != nullptr) *seals = ::fcntl(file, F_GET_SEALS);
    bytes = fileText("/proc/self/fd/" + std::to_string(file));
    ::close(file);
    return bytes;
  }

 private:
  const int m_socket;
};

/// NAME=value of each field, as the protocol says it is read.
Texts fieldsOf(const std::string& entry) {
  Texts fields;
  for (std::size_t at = 0; at < entry.size();) {
    std::size_t end = entry.find_first_of("=\n", at);
    std::string field = entry.substr(at, end - at) + "=";
    at = end + 1;
    if (entry[end] == '=') {
      end = entry.find('\n', at);
    } else {
      std::uint64_t length = 0;
      for (int i = 7; i >= 0; --i)
        length = length << 8 | static_cast<unsigned char>(entry[at + static_cast<std::size_t>(i)]);
      at += 8, end = at + length;
    }
    fields.push_back(field + entry.substr(at, end - at));
    at = end + 1;
  }
  return fields;
}

struct JournalAppenderTest : testing::Test {
  JournalAppenderTest() {
    appender.setSocket(dir.file("socket").c_str());
    appender.setIdentifier("shop");
    logger->addAppender(&appender);
  }
  ~JournalAppenderTest() override { logger->removeAppender(&appender); }

  const TempDir dir;
  LOGJournalAppender appender;
  Tree tree;
  LOGLogger* const logger = tree.getLogger("shop.orders");
  const InternalLog log;
};

}  // namespace

TEST_F(JournalAppenderTest, SendsEachEventAsAnEntryWithFields) {
  const Journal journal(dir.file("socket"));
  LOGNDC::push("request\n7");
  LOG4VRK_CONTEXT("Order.id", 17, "9th", nullptr);
  const std::string longName(70, 'n');
  const int line = __LINE__ + 1;
  LOG4VRK_ERROR_KV(logger, "disk \xC3\xBC full\n=\n", "level", 2.5, longName, "two\nlines", "Order.id", true);
  LOGNDC::pop();
  const std::string entry = journal.next();
  EXPECT_EQ(entry.substr(0, 28), "MESSAGE\n\x0F\0\0\0\0\0\0\0disk \xC3\xBC full"s.substr(0, 28));
  const std::unique_ptr<LOGLoggingEvent> own(new LOGLoggingEvent("x", logger, LOGLevel::INFO_OBJ, nullptr));
  EXPECT_EQ(fieldsOf(entry),
            (Texts{"MESSAGE=disk \xC3\xBC full\n=\n", "PRIORITY=3", "LEVEL=ERROR", "SYSLOG_IDENTIFIER=shop",
                   "LOGGER=shop.orders", "THREAD=" + own->getThreadName().toUtf8(), "CONTEXT=request\n7",
                   "CODE_FILE=" __FILE__, "CODE_LINE=" + std::to_string(line), "CODE_FUNC=TestBody", "FIELD_9TH=null",
                   "FIELD_LEVEL=2.5", std::string(64, 'N') + "=two\nlines", "ORDER_ID=true"}));
  LOGPatternLayout layout("%c: %m%n");
  appender.setLayout(&layout);
  LOGLevel notice(25000, "NOTICE", 5);
  const std::pair<LOGLevel*, const char*> PRIORITIES[] = {
      {LOGLevel::FATAL_OBJ, "2"}, {LOGLevel::WARN_OBJ, "4"}, {&notice, "5"}, {LOGLevel::DEBUG_OBJ, "7"}};
  for (const auto& [level, priority] : PRIORITIES) {
    logger->log(level, "text");
    const Texts fields = fieldsOf(journal.next());
    EXPECT_EQ(fields.at(0), "MESSAGE=shop.orders: text") << "the layout's text without its line feed";
    EXPECT_EQ(fields.at(1), std::string("PRIORITY=") + priority);
  }
  EXPECT_EQ(log.text(), "");
  const std::string parameters = parameter("Identifier", "till") + parameter("Socket", dir.file("socket"));
  EXPECT_EQ(LOG4VRKConfigurator::initialize(rootDocument(dir, Way::ORDINARY, "JournalAppender", parameters).c_str()),
            1);
  LOGManager::getRootLogger()->info("by a document");
  EXPECT_EQ(fieldsOf(journal.next()).at(3), "SYSLOG_IDENTIFIER=till");
}

TEST_F(JournalAppenderTest, SendsWhatIsTooLargeForADatagramInASealedFile) {
  const Journal journal(dir.file("socket"));
  for (const std::size_t size : {std::size_t{1000}, std::size_t{5} << 20}) {
    const std::string text(size, 'x');
    logger->info(text);
    int seals = 0;
    EXPECT_EQ(fieldsOf(journal.next(&seals)).at(0), "MESSAGE=" + text);
    EXPECT_EQ(seals, size < 2000 ? -1 : F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
  }
}

TEST_F(JournalAppenderTest, LosesOnlyWhatTheJournalDoesNotTakeAndWaitsForItOnce) {
  const std::string lost =
      "log4vrk:ERROR LOGJournalAppender::append -- the event is lost: " + dir.file("socket") + ": ";
  logger->info("nobody is there");
  EXPECT_EQ(log.text(), lost + "No such file or directory [2]\n");
  {
    const Journal journal(dir.file("socket"));
    logger->info("one");
    EXPECT_EQ(fieldsOf(journal.next()).at(0), "MESSAGE=one");
  }
  logger->info("it is gone");
  EXPECT_EQ(log.lines().at(1), lost + "Connection refused [111]");
  std::filesystem::remove(dir.file("socket"));
  const Journal journal(dir.file("socket"));  // another
  const auto begin = std::chrono::steady_clock::now();
  while (log.lines().size() < 20) logger->info("more than it has room for");
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(taken.count(), 2) << "a slow journal is waited for";
  EXPECT_LT(taken.count(), 10) << "and not by each event";
  EXPECT_EQ(log.lines().at(2), lost + "Resource temporarily unavailable [11]");
  while (journal.next() != "(nothing)") {
  }
  logger->info("room again");
  EXPECT_EQ(fieldsOf(journal.next()).at(0), "MESSAGE=room again");
  appender.close();
  appender.close();
  logger->info("closed");
  EXPECT_EQ(journal.next(), "(nothing)");
}

TEST_F(JournalAppenderTest, IsUnderstoodByARealJournal) {
  constexpr char DAEMON[] = "/lib/systemd/systemd-journald";
  if (::access(DAEMON, X_OK) != 0) GTEST_SKIP() << "needs systemd-journald and journalctl (Debian: systemd)";
  // With a /run and a /var/log of the test's own.
  const bool isApart =
      ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
      ::mount("run", "/run", "tmpfs", 0, nullptr) == 0 && ::mount("log", "/var/log", "tmpfs", 0, nullptr) == 0;
  if (!isApart || ::access("/etc/machine-id", R_OK) != 0) GTEST_SKIP() << "needs root, mounts and a machine-id";
  std::filesystem::create_directories("/run/systemd/journal.shop");
  const std::string socket = "/run/systemd/journal.shop/socket";
  const pid_t daemon = ::fork();
  if (daemon == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::setenv("SYSTEMD_LOG_TARGET", "null", 1);
    ::execl(DAEMON, DAEMON, "shop", nullptr);
    ::_exit(127);
  }
  appender.setSocket(socket.c_str());
  ASSERT_TRUE(eventually([&] { return std::filesystem::exists(socket); }));
  const std::string large(2 << 20, 'x');
  LOG4VRK_WARN(logger, "two\nlines");
  logger->info(large);
  const std::string read =
      "journalctl --no-pager -o export --file '/var/log/journal/*/*.journal' 2>/dev/null >" + dir.file("entries");
  EXPECT_TRUE(eventually([&] {
    return std::system(read.c_str()) == 0 && fileText(dir.file("entries")).find(large) != std::string::npos;
  }));
  const std::string entries = fileText(dir.file("entries"));
  for (const char* field :
       {"two\nlines\n", "PRIORITY=4\n", "LOGGER=shop.orders\n", "SYSLOG_IDENTIFIER=shop\n", "CODE_FUNC=TestBody\n"}) {
    EXPECT_NE(entries.find(field), std::string::npos) << field;
  }
  EXPECT_EQ(log.text(), "");
  ::kill(daemon, SIGTERM);
  ::waitpid(daemon, nullptr, 0);
}
