// The form markup reader: identifiers, attributes, entity expansion as the
// text is read, conditional sections, skipped subtrees, the balance message
// and the widget tree it builds.
#include "ToolkitFixture.h"
#include "ui/ValueLabel.h"
#include "ui/markup/Markup_Attributes.h"

namespace {

// Markup read into a bare context on an 800 x 480 screen.
class MarkupTest : public testing::Test {
protected:
    std::unique_ptr<Toolkit> tk = ToolkitTest_Screen();

    Widget* Load(const std::string& markup, Widget* parent = nullptr, const char* name = "test.xml") {
        return ToolkitTest_Load(tk.get(), markup, parent, name);
    }
    Widget* Find(const char* id) { return Widget_FindById(tk->root.get(), Widget_PackId(id)); }
    template <class Record>
    const Record* Rec(const char* id) {
        const Record* record = Widget_Record<Record>(Find(id));
        EXPECT_NE(record, nullptr) << id;
        return record;
    }
    std::string LabelText(const char* id) {
        const auto* label = Widget_Record<LabelRecord>(Find(id));
        return label ? label->text : "(no label)";
    }
    // Loads the markup and returns what the reader printed.
    std::string Printed(const std::string& markup, const char* name = "test.xml") {
        testing::internal::CaptureStdout();
        Load(markup, nullptr, name);
        return testing::internal::GetCapturedStdout();
    }
};
using ToolkitEventsDeathTest = MarkupTest;

TEST_F(MarkupTest, IdentifiersPackTheFirstCharacterMostSignificantAndAreFoundDepthFirst) {
    EXPECT_EQ(Widget_PackId("MFrm"), 0x4D46726Du);
    EXPECT_EQ(Widget_PackId("LONGER"), Widget_PackId("LONG"));
    Load(R"(<FORM ID="BTOK"></FORM><FORM ID="AB"></FORM>)"
         R"(<FORM><BUTTON NavLeftID="Left" NavRightID="Rght" ID="BtOk"></BUTTON>)"
         R"(<BUTTON NavLeftID="Only"></BUTTON></FORM>)");
    ASSERT_EQ(tk->root->children.size(), 3u);
    EXPECT_EQ(tk->root->children[0]->id, 0x42544F4Bu);
    EXPECT_EQ(tk->root->children[1]->id, 0x41420000u);
    Widget* form = tk->root->children[2].get();
    ASSERT_EQ(form->children.size(), 2u);
    EXPECT_EQ(form->children[0]->id, Widget_PackId("BtOk"));
    const NavigationRecord& nav = Rec<ButtonRecord>("BtOk")->navigation;
    EXPECT_EQ(std::pair(nav.navLeft, nav.navRight), std::pair(Widget_PackId("Left"), Widget_PackId("Rght")));
    EXPECT_EQ(form->children[1]->id, 0u);  // NavLeftID's tail is not an ID
    EXPECT_EQ(Widget_Record<ButtonRecord>(form->children[1].get())->navigation.navLeft,
              Widget_PackId("Only"));
    // Widget_FindById is depth first, pre-order.
    Load(R"(<FORM ID="Root">)"
         R"(<LAYOUT ID="L1__"><LAYOUT ID="Deep"><LABEL ID="Same" Text="first"></LABEL></LAYOUT></LAYOUT>)"
         R"(<LABEL ID="Same" Text="second"></LABEL>)"
         R"(</FORM>)");
    Widget* root = Find("Root");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("Root")), root);
    EXPECT_EQ(LabelText("Same"), "first");
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("None")), nullptr);
    Widget* second = root->children[1].get();
    EXPECT_EQ(Widget_FindById(second, Widget_PackId("Same")), second);
}

TEST_F(MarkupTest, EveryElementMakesItsKindWithItsAttributesWhoseWordsMatchExactly) {
    Load(R"(<FORM ID="Form">
      <PELLUCIDAVIEW ID="View" TopLeftX="10%"></PELLUCIDAVIEW>
      <PELLUCIDAHISTOGRAM ID="Hist" NumBins="256"></PELLUCIDAHISTOGRAM>
      <VIRTUALKEYBOARD ID="Keys" NumbersOnly></VIRTUALKEYBOARD>
      <LAYOUT ID="Layt" Quadrant="South" MetaFocus FillBackground QuickKey="q">
        <BUTTON ID="Butn" Text="Keep" TextAlign="Left" Resource="icon_alert.sqi" NoGloss Flat Rounded="Top"></BUTTON>
      </LAYOUT>
      <LABEL ID="Labl" Text="Caption" Align="Right"></LABEL>
      <FIELD ID="Fiel" Text="42" Align="Center" Resource="x"></FIELD>
      <FIELDMULTI ID="Mult"></FIELDMULTI>
      <BITMAP ID="Bitm" Resource="splash.png" FillMode="Native" Align="Bottom" FillBackground></BITMAP>
      <LIST ID="List"></LIST>
      <SELECTOR ID="Sele" Item="One" Item="Two" Item="Three"></SELECTOR>
      <LEVELSETTER ID="LvS0"></LEVELSETTER>
      <APPLET ID="Appl"></APPLET>
      <GESTUREAREA ID="Gest"></GESTUREAREA>
    </FORM>)");
    // The form and its children in order, each with its record (0 marks a widget without one).
    auto kind = [](const Widget& w) { return w.data ? w.type : 0u; };
    std::vector<uint32_t> kinds{kind(*Find("Form"))};
    for (const auto& child : Find("Form")->children) kinds.push_back(kind(*child));
    EXPECT_EQ(kinds, (std::vector<uint32_t>{kWidgetForm, kWidgetImageView, kWidgetHistogram,
                                            kWidgetVirtualKeyboard, kWidgetLayout, kWidgetLabel, kWidgetField,
                                            kWidgetFieldMulti, kWidgetBitmap, kWidgetList, kWidgetSelector,
                                            kWidgetLevelSetter, kWidgetApplet, kWidgetGestureArea}));
    EXPECT_EQ(kind(*Find("Butn")), kWidgetButton);
    EXPECT_EQ(Rec<HistogramRecord>("Hist")->numBins, 256u);
    EXPECT_TRUE(Rec<VirtualKeyboardRecord>("Keys")->numbersOnly);
    const auto* layout = Rec<LayoutRecord>("Layt");
    EXPECT_EQ(
        std::tuple(layout->quadrant, layout->metaFocus, layout->fillBackground, layout->navigation.quickKey),
        std::tuple(kQuadrantSouth, true, true, 'q'));
    const auto* button = Rec<ButtonRecord>("Butn");
    EXPECT_EQ(std::tuple(button->text, button->resource, button->textAlign, button->noGloss, button->flat,
                         button->rounded),
              std::tuple("Keep", "icon_alert.sqi", kAlignLeft, true, true, 3u));
    EXPECT_EQ(Rec<LabelRecord>("Labl")->align, kAlignRight);
    EXPECT_EQ(Rec<FieldRecord>("Fiel")->align, kAlignCenter);
    const auto* bitmap = Rec<BitmapRecord>("Bitm");
    EXPECT_EQ(std::tuple(bitmap->fillMode, bitmap->align, bitmap->fillBackground),
              std::tuple(kFillNative, kAlignBottom, true));
    EXPECT_EQ(Rec<SelectorRecord>("Sele")->items, (std::vector<std::string>{"One", "Two", "Three"}));
    // The setter's caption and value labels are its own children.
    Widget* setter = Find("LvS0");
    ASSERT_EQ(setter->children.size(), 2u);
    EXPECT_EQ(Rec<LevelSetterRecord>("LvS0")->captionLabel, setter->children[0].get());
    EXPECT_EQ(Rec<LevelSetterRecord>("LvS0")->valueLabel, setter->children[1].get());
    // Words match exactly, and geometry values follow the screen.
    tk = ToolkitTest_Screen(1920, 1080);
    Load(
        R"(<FORM><BUTTON ID="B1" Rounded="Full"></BUTTON><BUTTON ID="B2" Rounded="Round"></BUTTON>)"
        R"(<BUTTON ID="B3" Rounded="full"></BUTTON><BITMAP ID="B4" FillMode="stretch"></BITMAP>)"
        R"(<LAYOUT ID="B5" Quadrant="NorthEast"></LAYOUT><LAYOUT ID="B6" Quadrant="Middle"></LAYOUT></FORM>)");
    // Unknown words change nothing.
    EXPECT_EQ(std::tuple(Rec<ButtonRecord>("B1")->rounded, Rec<ButtonRecord>("B2")->rounded,
                         Rec<ButtonRecord>("B3")->rounded, Rec<BitmapRecord>("B4")->fillMode,
                         Rec<LayoutRecord>("B5")->quadrant, Rec<LayoutRecord>("B6")->quadrant),
              std::tuple(15u, 0u, 0u, kFillAutoFit, kQuadrantNorthEast, kQuadrantCenter));
    for (auto [text, value] : {std::pair{"50%", 16384},
                               {"100%", 32768},
                               {"33%", (33 << 15) / 100},
                               {"SmallestObjectSizeX", 48},
                               {"SmallestObjectSizeY", 48},
                               {"1234", 1234},
                               {"smallestobjectsizex", 0}})
        EXPECT_EQ(Markup_GeometryValue(tk.get(), text), value) << text;
    Load(
        R"(<LAYOUT ID="Geo_" TopLeftX="25%" BottomRightX="75%" TopLeftY="10" BottomRightY="&system-buttonSizePixels;")"
        R"( MinTopLeftPixelsX="SmallestObjectSizeX" MinBottomRightPixelsY="&system-buttonSizePixelsX2;"></LAYOUT>)");
    const GeometryRecord& g = Rec<LayoutRecord>("Geo_")->geometry;
    EXPECT_EQ(std::vector<int32_t>({g.topLeftX, g.bottomRightX, g.topLeftY, g.bottomRightY,
                                    g.minTopLeftPixelsX, g.minBottomRightPixelsY}),
              std::vector<int32_t>({8192, 24576, 10, 36, 48, 72}));
}

TEST_F(MarkupTest, ReferencesExpandAsTheyCompleteAndValuesAreRescanned) {
    Load(
        "<LABEL ID=\"Oum_\" Text=\"Sch&ouml;n\"></LABEL>"
        "<LABEL ID=\"Lang\" Text=\"&language-buttonlast;!\"></LABEL>"
        "<LABEL ID=\"Ctrl\" Text=\"a\tb\r\nc&lf;d\"></LABEL>"
        "<LABEL ID=\"Amp_\" Text=\"&quot;x&quot; &amp; y\"></LABEL>");
    EXPECT_EQ(LabelText("Oum_"), "Sch\xc3\xb6n");
    EXPECT_EQ(LabelText("Lang"), "&language-buttonlast;!");
    EXPECT_EQ(LabelText("Ctrl"), "abc\nd");
    EXPECT_EQ(LabelText("Amp_"), "\"x\" & y");
    // A reference that expands to itself stops.
    Entity_Define(&tk->markupEntities, "&loop;", "x&loop;");
    Load(R"(<LABEL ID="Loop" Text="&loop;"></LABEL>)");
    const std::string text = LabelText("Loop");
    EXPECT_EQ(text.substr(text.size() - 6), "&loop;");
    EXPECT_GT(text.size(), 100u);
}

TEST_F(MarkupTest, EntityDefinedInOneFormExpandsInALaterOneBeforeTheBuiltIns) {
    Load(R"(<ENTITY STRING="Last" REFERENCE="&language-buttonlast;"></ENTITY>)"
         R"(<ENTITY STRING="only string"></ENTITY><ENTITY REFERENCE="&language-alone;"></ENTITY>)"
         R"(<ENTITY STRING="deutsch" REFERENCE="&system-os;"></ENTITY>)");
    EXPECT_EQ(Entity_Lookup(&tk->markupEntities, "&language-alone;"), nullptr);
    EXPECT_EQ(tk->root->children.size(), 0u);
    Entity_Define(&tk->markupEntities, "&system-language;", "francais");
    Load(R"(<LABEL ID="Btn_" Text="&language-buttonlast; &amp; more"></LABEL>)"
         R"(<LABEL ID="Lng_" Text="&system-language;/&system-os;"></LABEL>)");
    EXPECT_EQ(LabelText("Btn_"), "Last & more");
    EXPECT_EQ(LabelText("Lng_"), "francais/deutsch");
}

// Entities in a condition are expanded first; a section not shown defines no
// entity either.
TEST_F(MarkupTest, ConditionsSplitAtTheFirstEqualsFromTheSecondCharacterAndSectionsDoNotNest) {
    const std::pair<const char*, bool> cases[] = {
        {R"(Condition="a!=b")", true},
        {R"(Condition="a=b")", false},
        {R"(Condition="")", false},
        {R"(Condition="x")", true},
        {R"(Condition="a=a")", true},
        {R"(Condition="a!=a")", false},
        {R"(Condition="=x")", true},  // no "=" after the first character
        {"", false},
        {R"(Condition="&system-orientation;=landscape")", true},  // 800 x 480
        {R"(Condition="&system-orientation;=portrait")", false},
        {R"(Condition="&system-language;!=english")", false},
    };
    for (auto [condition, shown] : cases) {
        tk = ToolkitTest_Screen();
        Load(
            std::string("<CONDITIONAL ") + condition + R"(><LABEL ID="In__"></LABEL>)" +
            R"(<ENTITY STRING="Back" REFERENCE="&language-back;"></ENTITY></CONDITIONAL><LABEL ID="Aftr"></LABEL>)");
        EXPECT_EQ(Find("In__") != nullptr, shown) << condition;
        EXPECT_EQ(Entity_Lookup(&tk->markupEntities, "&language-back;") != nullptr, shown) << condition;
        EXPECT_NE(Find("Aftr"), nullptr) << condition;
    }
    // Sections do not nest.
    // An inner "/CONDITIONAL" re-activates the rest of the outer section.
    EXPECT_EQ(Printed(R"(<CONDITIONAL Condition="a=b"><LABEL ID="Out1"></LABEL>)"
                      R"(<CONDITIONAL Condition="c=d"><LABEL ID="In__"></LABEL></CONDITIONAL>)"
                      R"(<LABEL ID="Out2"></LABEL></CONDITIONAL>)"),
              "");
    EXPECT_EQ(Find("Out1"), nullptr);
    EXPECT_EQ(Find("In__"), nullptr);
    EXPECT_NE(Find("Out2"), nullptr);
    // An inner condition is evaluated inside an inactive section.
    Load(R"(<CONDITIONAL Condition="a=b"><CONDITIONAL Condition="x"><LABEL ID="In2_"></LABEL>)"
         R"(</CONDITIONAL></CONDITIONAL>)");
    EXPECT_NE(Find("In2_"), nullptr);
}

TEST_F(MarkupTest, ChildrenOfControlsAndUnknownElementsAreSkippedAndUnbalancedMarkupSaysSo) {
    EXPECT_EQ(
        Printed(
            R"(<?xml version="1.0"?><!-- a comment --><FORM ID="Frm_">)"
            R"(<BUTTON ID="Btn_"><LABEL ID="Skp1"><LAYOUT ID="Skp2"></LAYOUT></LABEL></BUTTON>)"
            R"(<UNKNOWN ID="Unk_"><LABEL ID="Kept"></LABEL></UNKNOWN>)"
            R"(<LABEL ID="Last" Bogus="1"></LABEL><LABEL ID="One_" Text="a/b"/><LAYOUT ID="Two_"/></FORM>)"),
        "");
    Widget* form = Find("Frm_");
    ASSERT_NE(form, nullptr);
    for (const char* skipped : {"Skp1", "Skp2", "Unk_"}) EXPECT_EQ(Find(skipped), nullptr) << skipped;
    // An unknown element makes no level: its children attach to the form.
    for (const char* kept : {"Kept", "Last", "One_", "Two_"}) EXPECT_EQ(Find(kept)->parent, form) << kept;
    EXPECT_EQ(Find("Btn_")->children.size(), 0u);
    EXPECT_EQ(LabelText("One_"), "a/b");  // a self-closing tag opens and closes
    // Markup loaded under a given parent builds there.
    Widget* inner = Load(R"(<FORM ID="Sub_"></FORM>)", form);
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->parent, form);
    EXPECT_EQ(tk->root->children.size(), 1u);
    // Unbalanced markup says so and keeps the widgets.
    EXPECT_EQ(Printed(R"(<FORM ID="Frm_"><LABEL ID="Lbl_"></LABEL>)", "Pellucida_Broken.xml"),
              "OPENS != CLOSES <Pellucida_Broken.xml>\n");
    EXPECT_NE(Find("Lbl_"), nullptr);
    EXPECT_EQ(Printed(R"(</FORM></LABEL>)"), "OPENS != CLOSES <test.xml>\n");
}

int g_draws = 0;

TEST_F(MarkupTest, UpdateFormatsAndRunsOnlyThePlainDrawsAtOnce) {
    Load(R"(<FORM><LEVELSETTER ID="LvS0"></LEVELSETTER></FORM>)");
    Widget* setter = Find("LvS0");
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    record->format = [](void*, const LevelSetterRecord&, uint32_t v) { return "at " + std::to_string(v); };
    record->valueLabel->handler = [](Toolkit*, Widget*, const WidgetEvent* event) {
        g_draws += event->code == kEventDraw;
        return 1;
    };
    // A pointer event waiting in the ring stays queued; plain draws run.
    Toolkit_PostEvent(tk.get(), setter, kEventPress, 5, 6, 1);
    Toolkit_PostEvent(tk.get(), record->valueLabel, kEventDraw);
    Toolkit_PostEvent(tk.get(), record->valueLabel, kEventDraw, 1);
    g_draws = 0;
    ValueLabel_Update(tk.get(), setter, 65);
    EXPECT_EQ(Widget_Record<LabelRecord>(record->valueLabel)->text, "at 65");
    EXPECT_EQ(g_draws, 2);
    std::vector<std::pair<uint32_t, uint32_t>> left;  // code and first payload word
    for (ToolkitEvent e; Toolkit_TakeEvent(tk.get(), &e);) left.emplace_back(e.code, e.payload[0]);
    EXPECT_EQ(left, (std::vector<std::pair<uint32_t, uint32_t>>{{kEventPress, 5}, {kEventDraw, 1}}));
}

TEST_F(ToolkitEventsDeathTest, FullRingEndsTheProcessWithStatusZero) {
    for (uint32_t i = 0; i < kToolkitEventRingSize - 1; ++i) Toolkit_PostEvent(tk.get(), nullptr, kEventTick);
    EXPECT_EQ(Toolkit_PendingEvents(tk.get()), kToolkitEventRingSize - 1);
    EXPECT_EXIT(Toolkit_PostEvent(tk.get(), nullptr, kEventTick), ::testing::ExitedWithCode(0), "");
}

}  // namespace
