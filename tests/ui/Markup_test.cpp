// The form markup reader: identifiers, attributes, entity expansion as the
// text is read, conditional sections, skipped subtrees, the balance message
// and the widget tree it builds.
#include "ui/Entities.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"
#include "ui/Toolkit_Events.h"
#include "ui/ValueLabel.h"
#include "ui/WidgetKinds.h"
#include "ui/markup/Markup_Attributes.h"
#include "ui/markup/Markup_Form.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

std::unique_ptr<Toolkit> Screen(uint32_t w = 800, uint32_t h = 480) {
    auto tk = Toolkit_CreateBare();
    Toolkit_SetScreen(tk.get(), w, h, w, nullptr);
    Toolkit_SetMetricsFromScreen(tk.get());
    return tk;
}

Widget* Load(Toolkit* tk, const std::string& markup, Widget* parent = nullptr) {
    return Form_LoadText(tk, "test.xml", reinterpret_cast<const uint8_t*>(markup.data()), markup.size(),
                         parent);
}

std::string LabelText(Toolkit* tk, const char* id) {
    const auto* label = Widget_Record<LabelRecord>(Widget_FindById(tk->root.get(), Widget_PackId(id)));
    return label ? label->text : "(no label)";
}

TEST(MarkupIdentifiers, PackedFirstCharacterMostSignificant) {
    EXPECT_EQ(Widget_PackId("BTOK"), 0x42544F4Bu);
    EXPECT_EQ(Widget_PackId("AB"), 0x41420000u);
    EXPECT_EQ(Widget_PackId("MFrm"), 0x4D46726Du);
    EXPECT_EQ(Widget_PackId("LONGER"), Widget_PackId("LONG"));
    auto tk = Screen();
    Load(tk.get(), R"(<FORM ID="BTOK"></FORM><FORM ID="AB"></FORM>)");
    ASSERT_EQ(tk->root->children.size(), 2u);
    EXPECT_EQ(tk->root->children[0]->id, 0x42544F4Bu);
    EXPECT_EQ(tk->root->children[1]->id, 0x41420000u);
}

TEST(MarkupIdentifiers, IdDoesNotCaptureNavLeftId) {
    auto tk = Screen();
    Load(tk.get(), R"(<FORM><BUTTON NavLeftID="Left" NavRightID="Rght" ID="BtOk"></BUTTON>)"
                   R"(<BUTTON NavLeftID="Only"></BUTTON></FORM>)");
    Widget* form = tk->root->children.at(0).get();
    ASSERT_EQ(form->children.size(), 2u);
    EXPECT_EQ(form->children[0]->id, Widget_PackId("BtOk"));
    const auto* button = Widget_Record<ButtonRecord>(form->children[0].get());
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->navigation.navLeft, Widget_PackId("Left"));
    EXPECT_EQ(button->navigation.navRight, Widget_PackId("Rght"));
    EXPECT_EQ(form->children[1]->id, 0u);
    EXPECT_EQ(Widget_Record<ButtonRecord>(form->children[1].get())->navigation.navLeft,
              Widget_PackId("Only"));
}

TEST(MarkupTree, FindByIdIsDepthFirstPreOrder) {
    auto tk = Screen();
    Load(tk.get(),
         R"(<FORM ID="Root">)"
         R"(<LAYOUT ID="L1__"><LAYOUT ID="Deep"><LABEL ID="Same" Text="first"></LABEL></LAYOUT></LAYOUT>)"
         R"(<LABEL ID="Same" Text="second"></LABEL>)"
         R"(</FORM>)");
    Widget* form = Widget_FindById(tk->root.get(), Widget_PackId("Root"));
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Root")), form);
    EXPECT_EQ(LabelText(tk.get(), "Same"), "first");
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("None")), nullptr);
    Widget* second = form->children[1].get();
    EXPECT_EQ(Widget_FindById(second, Widget_PackId("Same")), second);
}

TEST(MarkupTree, EveryElementMakesItsKind) {
    auto tk = Screen();
    Load(tk.get(), R"(<FORM ID="Form">
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
    Widget* root = tk->root.get();
    const std::pair<const char*, uint32_t> kinds[] = {
        {"Form", kWidgetForm},        {"View", kWidgetImageView},
        {"Hist", kWidgetHistogram},   {"Keys", kWidgetVirtualKeyboard},
        {"Layt", kWidgetLayout},      {"Butn", kWidgetButton},
        {"Labl", kWidgetLabel},       {"Fiel", kWidgetField},
        {"Mult", kWidgetFieldMulti},  {"Bitm", kWidgetBitmap},
        {"List", kWidgetList},        {"Sele", kWidgetSelector},
        {"LvS0", kWidgetLevelSetter}, {"Appl", kWidgetApplet},
        {"Gest", kWidgetGestureArea},
    };
    for (auto [id, kind] : kinds) {
        Widget* w = Widget_FindById(root, Widget_PackId(id));
        ASSERT_NE(w, nullptr) << id;
        EXPECT_EQ(w->type, kind) << id;
        EXPECT_NE(w->data, nullptr) << id;
    }
    EXPECT_EQ(Widget_Record<HistogramRecord>(Widget_FindById(root, Widget_PackId("Hist")))->numBins, 256u);
    EXPECT_TRUE(
        Widget_Record<VirtualKeyboardRecord>(Widget_FindById(root, Widget_PackId("Keys")))->numbersOnly);
    const auto* layout = Widget_Record<LayoutRecord>(Widget_FindById(root, Widget_PackId("Layt")));
    EXPECT_EQ(layout->quadrant, kQuadrantSouth);
    EXPECT_TRUE(layout->metaFocus);
    EXPECT_TRUE(layout->fillBackground);
    EXPECT_EQ(layout->navigation.quickKey, 'q');
    const auto* button = Widget_Record<ButtonRecord>(Widget_FindById(root, Widget_PackId("Butn")));
    EXPECT_EQ(button->text, "Keep");
    EXPECT_EQ(button->textAlign, kAlignLeft);
    EXPECT_EQ(button->resource, "icon_alert.sqi");
    EXPECT_TRUE(button->noGloss);
    EXPECT_TRUE(button->flat);
    EXPECT_EQ(button->rounded, 3u);
    EXPECT_EQ(Widget_Record<LabelRecord>(Widget_FindById(root, Widget_PackId("Labl")))->align, kAlignRight);
    EXPECT_EQ(Widget_Record<FieldRecord>(Widget_FindById(root, Widget_PackId("Fiel")))->align, kAlignCenter);
    const auto* bitmap = Widget_Record<BitmapRecord>(Widget_FindById(root, Widget_PackId("Bitm")));
    EXPECT_EQ(bitmap->fillMode, kFillNative);
    EXPECT_EQ(bitmap->align, kAlignBottom);
    EXPECT_TRUE(bitmap->fillBackground);
    EXPECT_EQ(Widget_Record<SelectorRecord>(Widget_FindById(root, Widget_PackId("Sele")))->items,
              (std::vector<std::string>{"One", "Two", "Three"}));
    // The setter's caption and value labels are its own children.
    Widget* setter = Widget_FindById(root, Widget_PackId("LvS0"));
    const auto* record = Widget_Record<LevelSetterRecord>(setter);
    ASSERT_EQ(setter->children.size(), 2u);
    EXPECT_EQ(record->captionLabel, setter->children[0].get());
    EXPECT_EQ(record->valueLabel, setter->children[1].get());
}

TEST(MarkupAttributes, WordVocabulariesAndUnknownWords) {
    auto tk = Screen();
    Load(
        tk.get(),
        R"(<FORM><BUTTON ID="B1" Rounded="Full"></BUTTON><BUTTON ID="B2" Rounded="Round"></BUTTON>)"
        R"(<BUTTON ID="B3" Rounded="full"></BUTTON><BITMAP ID="B4" FillMode="stretch"></BITMAP>)"
        R"(<LAYOUT ID="B5" Quadrant="NorthEast"></LAYOUT><LAYOUT ID="B6" Quadrant="Middle"></LAYOUT></FORM>)");
    Widget* root = tk->root.get();
    EXPECT_EQ(Widget_Record<ButtonRecord>(Widget_FindById(root, Widget_PackId("B1")))->rounded, 15u);
    EXPECT_EQ(Widget_Record<ButtonRecord>(Widget_FindById(root, Widget_PackId("B2")))->rounded, 0u);
    EXPECT_EQ(Widget_Record<ButtonRecord>(Widget_FindById(root, Widget_PackId("B3")))->rounded, 0u);
    EXPECT_EQ(Widget_Record<BitmapRecord>(Widget_FindById(root, Widget_PackId("B4")))->fillMode,
              kFillAutoFit);
    EXPECT_EQ(Widget_Record<LayoutRecord>(Widget_FindById(root, Widget_PackId("B5")))->quadrant,
              kQuadrantNorthEast);
    EXPECT_EQ(Widget_Record<LayoutRecord>(Widget_FindById(root, Widget_PackId("B6")))->quadrant,
              kQuadrantCenter);
}

TEST(MarkupAttributes, GeometryValues) {
    auto tk = Screen(1920, 1080);
    EXPECT_EQ(Markup_GeometryValue(tk.get(), "50%"), 16384);
    EXPECT_EQ(Markup_GeometryValue(tk.get(), "100%"), 32768);
    EXPECT_EQ(Markup_GeometryValue(tk.get(), "33%"), (33 << 15) / 100);
    EXPECT_EQ(Markup_GeometryValue(tk.get(), "SmallestObjectSizeX"), 48);
    EXPECT_EQ(Markup_GeometryValue(tk.get(), "SmallestObjectSizeY"), 48);
    EXPECT_EQ(Markup_GeometryValue(tk.get(), "1234"), 1234);
    EXPECT_EQ(Markup_GeometryValue(tk.get(), "smallestobjectsizex"), 0);
    Load(
        tk.get(),
        R"(<LAYOUT ID="Geo_" TopLeftX="25%" BottomRightX="75%" TopLeftY="10" BottomRightY="&system-buttonSizePixels;")"
        R"( MinTopLeftPixelsX="SmallestObjectSizeX" MinBottomRightPixelsY="&system-buttonSizePixelsX2;"></LAYOUT>)");
    const auto* g =
        &Widget_Record<LayoutRecord>(Widget_FindById(tk->root.get(), Widget_PackId("Geo_")))->geometry;
    EXPECT_EQ(g->topLeftX, 8192);
    EXPECT_EQ(g->bottomRightX, 24576);
    EXPECT_EQ(g->topLeftY, 10);
    EXPECT_EQ(g->bottomRightY, 36);
    EXPECT_EQ(g->minTopLeftPixelsX, 48);
    EXPECT_EQ(g->minBottomRightPixelsY, 72);
}

TEST(MarkupExpansion, ReferencesExpandAsTheyCompleteAndValuesAreRescanned) {
    auto tk = Screen();
    Load(tk.get(),
         "<LABEL ID=\"Oum_\" Text=\"Sch&ouml;n\"></LABEL>"
         "<LABEL ID=\"Lang\" Text=\"&language-buttonlast;!\"></LABEL>"
         "<LABEL ID=\"Ctrl\" Text=\"a\tb\r\nc&lf;d\"></LABEL>"
         "<LABEL ID=\"Amp_\" Text=\"&quot;x&quot; &amp; y\"></LABEL>");
    EXPECT_EQ(LabelText(tk.get(), "Oum_"), "Sch\xc3\xb6n");
    EXPECT_EQ(LabelText(tk.get(), "Lang"), "&language-buttonlast;!");
    EXPECT_EQ(LabelText(tk.get(), "Ctrl"), "abc\nd");
    EXPECT_EQ(LabelText(tk.get(), "Amp_"), "\"x\" & y");
}

TEST(MarkupExpansion, EntityDefinedInOneFormExpandsInALaterOne) {
    auto tk = Screen();
    Load(tk.get(), R"(<ENTITY STRING="Last" REFERENCE="&language-buttonlast;"></ENTITY>)"
                   R"(<ENTITY STRING="only string"></ENTITY><ENTITY REFERENCE="&language-alone;"></ENTITY>)");
    EXPECT_STREQ(Entity_Lookup(&tk->markupEntities, "&language-buttonlast;"), "Last");
    EXPECT_EQ(Entity_Lookup(&tk->markupEntities, "&language-alone;"), nullptr);
    EXPECT_EQ(tk->root->children.size(), 0u);
    Load(tk.get(), R"(<LABEL ID="Btn_" Text="&language-buttonlast; &amp; more"></LABEL>)");
    EXPECT_EQ(LabelText(tk.get(), "Btn_"), "Last & more");
}

TEST(MarkupExpansion, MarkupTableComesBeforeTheBuiltIns) {
    auto tk = Screen();
    Load(tk.get(), R"(<ENTITY STRING="deutsch" REFERENCE="&system-os;"></ENTITY>)"
                   R"(<LABEL ID="Lng_" Text="&system-language;/&system-os;"></LABEL>)");
    EXPECT_EQ(LabelText(tk.get(), "Lng_"), "english/deutsch");
    Entity_Define(&tk->markupEntities, "&system-language;", "francais");
    Load(tk.get(), R"(<LABEL ID="Lng2" Text="&system-language;"></LABEL>)");
    EXPECT_EQ(LabelText(tk.get(), "Lng2"), "francais");
}

TEST(MarkupExpansion, SelfReferringEntityStops) {
    auto tk = Screen();
    Entity_Define(&tk->markupEntities, "&loop;", "x&loop;");
    Load(tk.get(), R"(<LABEL ID="Loop" Text="&loop;"></LABEL>)");
    const std::string text = LabelText(tk.get(), "Loop");
    EXPECT_EQ(text.substr(text.size() - 6), "&loop;");
    EXPECT_GT(text.size(), 100u);
}

TEST(MarkupConditionals, SimpleConditions) {
    auto tk = Screen();
    Load(tk.get(), R"(<CONDITIONAL Condition="a!=b"><LABEL ID="NotE"></LABEL></CONDITIONAL>)"
                   R"(<CONDITIONAL Condition="a=b"><LABEL ID="Equ_"></LABEL></CONDITIONAL>)"
                   R"(<CONDITIONAL Condition=""><LABEL ID="Empt"></LABEL></CONDITIONAL>)"
                   R"(<CONDITIONAL Condition="x"><LABEL ID="Bare"></LABEL></CONDITIONAL>)"
                   R"(<CONDITIONAL Condition="a=a"><LABEL ID="Same"></LABEL></CONDITIONAL>)"
                   R"(<CONDITIONAL Condition="a!=a"><LABEL ID="NotS"></LABEL></CONDITIONAL>)"
                   R"(<CONDITIONAL Condition="=x"><LABEL ID="Lead"></LABEL></CONDITIONAL>)"
                   R"(<CONDITIONAL><LABEL ID="None"></LABEL></CONDITIONAL>)"
                   R"(<LABEL ID="Aftr"></LABEL>)");
    Widget* root = tk->root.get();
    EXPECT_NE(Widget_FindById(root, Widget_PackId("NotE")), nullptr);
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("Equ_")), nullptr);
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("Empt")), nullptr);
    EXPECT_NE(Widget_FindById(root, Widget_PackId("Bare")), nullptr);
    EXPECT_NE(Widget_FindById(root, Widget_PackId("Same")), nullptr);
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("NotS")), nullptr);
    // The "=" is searched from the second character on: "=x" has none.
    EXPECT_NE(Widget_FindById(root, Widget_PackId("Lead")), nullptr);
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("None")), nullptr);
    EXPECT_NE(Widget_FindById(root, Widget_PackId("Aftr")), nullptr);
}

TEST(MarkupConditionals, EntitiesSelectTheSection) {
    auto tk = Screen(480, 800);
    Load(tk.get(),
         R"(<CONDITIONAL Condition="&system-orientation;=landscape"><LABEL ID="Land"></LABEL></CONDITIONAL>)"
         R"(<CONDITIONAL Condition="&system-orientation;=portrait"><LABEL ID="Port"></LABEL></CONDITIONAL>)"
         R"(<CONDITIONAL Condition="&system-language;!=english">)"
         R"(<ENTITY STRING="Zurueck" REFERENCE="&language-back;"></ENTITY></CONDITIONAL>)");
    EXPECT_EQ(Widget_FindById(tk->root.get(), Widget_PackId("Land")), nullptr);
    EXPECT_NE(Widget_FindById(tk->root.get(), Widget_PackId("Port")), nullptr);
    EXPECT_EQ(Entity_Lookup(&tk->markupEntities, "&language-back;"), nullptr);
}

TEST(MarkupConditionals, InnerCloseReactivatesTheOuterSection) {
    auto tk = Screen();
    testing::internal::CaptureStdout();
    Load(tk.get(), R"(<CONDITIONAL Condition="a=b">)"
                   R"(<LABEL ID="Out1"></LABEL>)"
                   R"(<CONDITIONAL Condition="c=d"><LABEL ID="In__"></LABEL></CONDITIONAL>)"
                   R"(<LABEL ID="Out2"></LABEL>)"
                   R"(</CONDITIONAL>)");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    Widget* root = tk->root.get();
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("Out1")), nullptr);
    EXPECT_EQ(Widget_FindById(root, Widget_PackId("In__")), nullptr);
    EXPECT_NE(Widget_FindById(root, Widget_PackId("Out2")), nullptr);
}

TEST(MarkupConditionals, InnerConditionIsEvaluatedInsideAnInactiveSection) {
    auto tk = Screen();
    Load(tk.get(), R"(<CONDITIONAL Condition="a=b"><CONDITIONAL Condition="x"><LABEL ID="In__"></LABEL>)"
                   R"(</CONDITIONAL></CONDITIONAL>)");
    EXPECT_NE(Widget_FindById(tk->root.get(), Widget_PackId("In__")), nullptr);
}

TEST(MarkupStructure, ChildrenOfControlsAndUnknownElementsAreSkipped) {
    auto tk = Screen();
    testing::internal::CaptureStdout();
    Load(tk.get(), R"(<?xml version="1.0"?><!-- a comment --><FORM ID="Frm_">)"
                   R"(<BUTTON ID="Btn_"><LABEL ID="Skp1"><LAYOUT ID="Skp2"></LAYOUT></LABEL></BUTTON>)"
                   R"(<UNKNOWN ID="Unk_"><LABEL ID="Kept"></LABEL></UNKNOWN>)"
                   R"(<LABEL ID="Last" Bogus="1"></LABEL></FORM>)");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    Widget* form = Widget_FindById(tk->root.get(), Widget_PackId("Frm_"));
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Skp1")), nullptr);
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Skp2")), nullptr);
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Unk_")), nullptr);
    // An unknown element makes no level: its children attach to the form.
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Kept"))->parent, form);
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Last"))->parent, form);
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Btn_"))->children.size(), 0u);
}

TEST(MarkupStructure, SelfClosingTagsOpenAndClose) {
    auto tk = Screen();
    testing::internal::CaptureStdout();
    Load(tk.get(),
         R"(<FORM ID="Frm_"><LABEL ID="One_" Text="a/b"/><LAYOUT ID="Two_"/><LABEL ID="Thr_"/></FORM>)");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    Widget* form = Widget_FindById(tk->root.get(), Widget_PackId("Frm_"));
    ASSERT_EQ(form->children.size(), 3u);
    EXPECT_EQ(LabelText(tk.get(), "One_"), "a/b");
}

TEST(MarkupStructure, UnbalancedMarkupSaysSoAndKeepsTheWidgets) {
    auto tk = Screen();
    testing::internal::CaptureStdout();
    const std::string markup = R"(<FORM ID="Frm_"><LABEL ID="Lbl_"></LABEL>)";
    Form_LoadText(tk.get(), "Pellucida_Broken.xml", reinterpret_cast<const uint8_t*>(markup.data()),
                  markup.size(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "OPENS != CLOSES <Pellucida_Broken.xml>\n");
    EXPECT_NE(Widget_FindById(tk->root.get(), Widget_PackId("Lbl_")), nullptr);

    testing::internal::CaptureStdout();
    Load(tk.get(), R"(</FORM></LABEL>)");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "OPENS != CLOSES <test.xml>\n");
}

TEST(MarkupStructure, LoadsUnderTheGivenParent) {
    auto tk = Screen();
    Widget* form = Load(tk.get(), R"(<FORM ID="Main"></FORM>)");
    ASSERT_NE(form, nullptr);
    Widget* inner = Load(tk.get(), R"(<FORM ID="Sub_"></FORM>)", form);
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->parent, form);
    EXPECT_EQ(tk->root->children.size(), 1u);
}

int g_draws = 0;
int CountDraws(Toolkit*, Widget*, const WidgetEvent* event) {
    if (event->code == kEventDraw) ++g_draws;
    return 1;
}

TEST(LevelSetterLabel, UpdateFormatsAndDrawsAtOnce) {
    auto tk = Screen();
    Load(tk.get(), R"(<FORM><LEVELSETTER ID="LvS0"></LEVELSETTER></FORM>)");
    Widget* setter = Widget_FindById(tk->root.get(), Widget_PackId("LvS0"));
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    record->format = [](void*, const LevelSetterRecord&, uint32_t v) { return "at " + std::to_string(v); };
    record->valueLabel->handler = CountDraws;
    // A pointer event waiting in the ring stays queued; plain draws run.
    Toolkit_PostEvent(tk.get(), setter, kEventPress, 5, 6, 1);
    Toolkit_PostEvent(tk.get(), record->valueLabel, kEventDraw);
    Toolkit_PostEvent(tk.get(), record->valueLabel, kEventDraw, 1);
    g_draws = 0;
    ValueLabel_Update(tk.get(), setter, 65);
    EXPECT_EQ(Widget_Record<LabelRecord>(record->valueLabel)->text, "at 65");
    EXPECT_EQ(g_draws, 2);
    ASSERT_EQ(Toolkit_PendingEvents(tk.get()), 2u);
    ToolkitEvent e;
    ASSERT_TRUE(Toolkit_TakeEvent(tk.get(), &e));
    EXPECT_EQ(e.code, static_cast<uint32_t>(kEventPress));
    EXPECT_EQ(e.payload[0], 5u);
    ASSERT_TRUE(Toolkit_TakeEvent(tk.get(), &e));
    EXPECT_EQ(e.code, static_cast<uint32_t>(kEventDraw));
    EXPECT_EQ(e.payload[0], 1u);
}

TEST(ToolkitEventsDeathTest, FullRingEndsTheProcessWithStatusZero) {
    auto tk = Screen();
    for (uint32_t i = 0; i < kToolkitEventRingSize - 1; ++i) Toolkit_PostEvent(tk.get(), nullptr, kEventTick);
    EXPECT_EQ(Toolkit_PendingEvents(tk.get()), kToolkitEventRingSize - 1);
    EXPECT_EXIT(Toolkit_PostEvent(tk.get(), nullptr, kEventTick), ::testing::ExitedWithCode(0), "");
}

}  // namespace
