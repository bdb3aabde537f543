#include <dlfcn.h>

#include <climits>

#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

const std::string DIRECTORY = LOG4VRK_TEST_PROGRAM_DIR;

// How many renderers of the library live; -1 when it is not loaded.
int livingRenderers() {
  void* const library = ::dlopen((DIRECTORY + "/libEchoRenderer.so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (library == nullptr) return -1;
  const int count = reinterpret_cast<int (*)()>(::dlsym(library, "livingRenderers"))();
  ::dlclose(library);
  return count;
}

HookMessage message(const char* className, const HookMessage::Hook& onRender = nullptr) {
  HookMessage made("text", onRender);
  made.instance(className);
  return made;
}

std::string rendered(LOGObject& object) {
  const std::unique_ptr<I18NString> text(LOGRendererMap::findAndRender(&object));
  return text ? text->toUtf8() : "(null)";
}

class RendererMapTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    VRKConfigurationFactory::getInstance().addLibraryDirectory(I18NString(std::string_view(DIRECTORY)));
  }
  ~RendererMapTest() override { LOGRendererMap::clear(); }

  Tree repository;
  InternalLog log;
};

}  // namespace

TEST(ObjectRendererTest, WritesInNetworkOrderAtTheOffset) {
  using R = LOGObjectRenderer;
  using Write = void (*)(unsigned char*, long*);
  using namespace std::string_literals;
  static I18NString umlaut("a\u00fc"), letters("abcdefg"), cut2("abcde\u00fc"), cut4("abcd\U0001f600");
  const std::pair<Write, std::string> CASES[] = {
      {[](unsigned char* b, long* o) { R::writeByte(0xfe, b, o); }, "\xfe"},
      {[](unsigned char* b, long* o) { R::writeShort(-2, b, o); }, "\xff\xfe"},
      {[](unsigned char* b, long* o) { R::writeInt(-0x1020304, b, o); }, "\xfe\xfd\xfc\xfc"},
      {[](unsigned char* b, long* o) { R::writeUInt(static_cast<unsigned long>(0x189abcdefULL), b, o); },
       "\x89\xab\xcd\xef"},
      {[](unsigned char* b, long* o) { R::writeLong(LLONG_MIN + 0x1020304, b, o); }, "\x80\0\0\0\x01\x02\x03\x04"s},
      {[](unsigned char* b, long* o) { R::writeUTF(&umlaut, b, o); }, "\0\x03"s + "a\u00fc"},
      {[](unsigned char* b, long* o) { R::writeUTFExt(&letters, b, o, 5); }, ""},
      {[](unsigned char* b, long* o) { R::writeUTFExt(&letters, b, o, 6); }, "\0\x06"s + "abcdef"},
      {[](unsigned char* b, long* o) { R::writeUTFExt(&cut2, b, o, 6); }, "\0\x05"s + "abcde"},
      {[](unsigned char* b, long* o) { R::writeUTFExt(&cut4, b, o, 7); }, "\0\x04"s + "abcd"},
  };
  for (const auto& [put, bytes] : CASES) {
    const Write write = put;
    unsigned char buffer[] = "####################";
    long offset = 3;
    write(buffer, &offset);
    EXPECT_EQ(std::string(buffer, buffer + 20), "###" + bytes + std::string(17 - bytes.size(), '#'));
    EXPECT_EQ(offset, 3 + static_cast<long>(bytes.size()));
  }
  for (const auto& [unit, size] : {std::pair{u'x', 65507L}, {u'\u00fc', 65506L}}) {
    I18NString text(std::u16string(70000, unit));
    std::vector<unsigned char> buffer(70000);
    long offset = 0;
    R::writeUTFExt(&text, buffer.data(), &offset, LONG_MAX);
    EXPECT_TRUE(offset == 2 + size && buffer[0] * 256 + buffer[1] == size);
  }
}

TEST_F(RendererMapTest, RendersByTheLastRendererPutForTheClassElseByTheDefaultOne) {
  HookMessage object = message("Put");
  LOGDefaultRenderer first, second;
  LOGObjectRenderer* const standard = LOGRendererMap::getDefaultRenderer();
  const std::tuple<const char*, LOGObjectRenderer*, LOGObjectRenderer*> STEPS[] = {
      {"", &first, standard}, {"Put", nullptr, standard}, {"Put", &first, &first}, {"Put", &second, &second}};
  for (const auto& [className, put, expected] : STEPS) {
    LOGRendererMap::put(className, put);
    EXPECT_EQ(LOGRendererMap::getFromListRenderers(&object), expected);
    EXPECT_EQ(rendered(object), "text");
  }
  EXPECT_EQ(LOGRendererMap::findAndRender(nullptr), nullptr);
}

TEST_F(RendererMapTest, AsksTheLibraryForANewRendererAtEveryLookup) {
  LOGObjectRenderer* const first = LOGRendererMap::get("EchoRenderer");
  EXPECT_NE(LOGRendererMap::get("EchoRenderer"), first);
  EXPECT_EQ(livingRenderers(), 2);
  for (const char* name : {"Missing", "NoFunction", "NullRenderer", "echorenderer", ""}) {
    for (int i = 0; i < 2; ++i) EXPECT_EQ(LOGRendererMap::get(name), nullptr) << name;
    EXPECT_EQ(LOGRendererMap::isLibraryLoaded(name), 0) << name;
  }
  EXPECT_EQ(log.text(), "");
}

TEST_F(RendererMapTest, SaysWhatItAddsAndWhatItUnloads) {
  LOGRendererMap::clear();
  // The library is asked before the repository is looked at.
  EXPECT_EQ(assertionOf([] { LOGRendererMap::addRenderer(nullptr, "EchoRenderer", "Echoed"); }),
            "LOGRendererMap: VRK_ASSERT(repository);");
  EXPECT_EQ(livingRenderers(), 1);
  LOGRendererMap::addRenderer(&repository, "NullRenderer", "Echoed");
  LOGRendererMap::clear();
  EXPECT_EQ(log.text(), R"(log4vrk: LOGRendererMap::clear() -- begin
log4vrk: LOGRendererMap::clear -- the lib list is empty.
log4vrk: LOGRendererMap::clear() -- all libs are unloaded.
log4vrk: Rendering class: [EchoRenderer], Rendered class: [Echoed].
log4vrk: Rendering class: [NullRenderer], Rendered class: [Echoed].
log4vrk:ERROR Could not instantiate renderer [NullRenderer].
log4vrk: LOGRendererMap::clear() -- begin
log4vrk: LOGRendererMap::clear() -- unload rendering library: EchoRenderer
log4vrk: LOGRendererMap::clear ---- Could not close the library: EchoRenderer
log4vrk: LOGRendererMap::clear() -- all libs are unloaded.
)");
}

TEST_F(RendererMapTest, FreesRenderersThatAreReplacedAndUnloadsWhenTheRenderOnAnotherThreadHasEnded) {
  const Deadline deadline(60);
  for (int i = 0; i < 50; ++i) LOGRendererMap::addRenderer(&repository, "EchoRenderer", "Echoed");
  EXPECT_EQ(livingRenderers(), 1);
  std::atomic<bool> rendering{false};
  HookMessage object = message("Echoed", [&] {
    rendering = true;
    EXPECT_TRUE(eventually([] { return LOGRendererMap::isLibraryLoaded("EchoRenderer") == 0; }));
    for (int i = 0; i < 100; ++i) ASSERT_EQ(log.count("unload rendering library"), 0);
  });
  std::thread other([&] { EXPECT_EQ(rendered(object), "[text]"); });
  EXPECT_TRUE(eventually([&] { return rendering.load(); }));
  LOGRendererMap::clear();
  EXPECT_EQ(livingRenderers(), -1);
  other.join();
}

TEST_F(RendererMapTest, MayBeClearedWhileAnotherThreadLooksUp) {
  const Meanwhile clearing({LOGRendererMap::clear});
  for (int i = 0; i < 10000; ++i) LOGRendererMap::get("EchoRenderer");
}

// The last one here, because a library stays open.
TEST_F(RendererMapTest, KeepsTheLibraryOfTheRenderThatClearsTheMapAndNoOther) {
  for (const auto& [className, text, stays] : {std::tuple{"Plain", "text", false}, {"Echoed", "[text]", true}}) {
    LOGRendererMap::addRenderer(&repository, "EchoRenderer", "Echoed");
    HookMessage object = message(className, [] { LOGRendererMap::clear(); });
    EXPECT_EQ(rendered(object), text);
    EXPECT_EQ(livingRenderers() >= 0, stays) << className;
  }
  EXPECT_EQ(log.count("unload rendering library"), 1);
}
