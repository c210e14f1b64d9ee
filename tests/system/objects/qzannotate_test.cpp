#include "qz/system/objects/qzannotate.h"

#include <gtest/gtest.h>

#include "tests/system/cli/messages.h"
#include "tests/system/qzb/objects.h"

using namespace QZSystem;

namespace {

const float p[] = {1, 2, 3}, q[] = {4, 5, 6}, d[] = {0, 0, 1};

std::string Titles(const QZAnnotation& shape) {
  std::string titles;
  for (const QZAnnotation& child : QZIter(shape.GetChildren())) {
    if (!titles.empty()) titles += ' ';
    titles += *child.GetTitle() == '\0' ? "?" : child.GetTitle();
    if (const std::string deeper = Titles(child); !deeper.empty()) titles += "(" + deeper + ")";
  }
  return titles;
}

QZAnnotation Tree() {
  const QZAnnotation leaf = QZAnnotateLine("leaf", p, q);
  QZAnnotation branch = QZAnnotateSphere("branch", p, 1, nullptr), tree = QZAnnotateBox("tree", p, q);
  branch.AddChild(leaf);
  branch.AddChild(QZAnnotateText("note", q, "text"));
  tree.AddChild(branch);
  tree.AddChild(leaf);
  return tree;
}

TEST(Annotation, EachValueIsSetInItsPlace) {
  QZAnnotation shape(1, "x");
  EXPECT_EQ(Tell(shape), "type int 1; title string x; color char* -1 -1 -1 -1; ");
  shape.SetColor(QZRed);
  shape.SetRenderHint(0xFFFFFFFFU);
  shape.SetTitle("y");
  shape.SetType(2);
  shape.SetColor(QZGreen);
  EXPECT_EQ(Tell(shape), "type int 2; title string y; color char* 0 -1 0 -1; render int -1; ");
  EXPECT_TRUE(shape.GetColor() == QZGreen && shape.GetRenderHint() == 0xFFFFFFFFU && shape.GetType() == 2);
  EXPECT_STREQ(shape.GetTitle(), "y");
  shape.SetTitle(nullptr);
  EXPECT_FALSE(shape.HasData("title"));
  const std::unique_ptr<QZBase> copy(shape.CreateCopy());
  EXPECT_TRUE(copy->GetDataType() == QZGetDataType<QZAnnotation>() && copy->IsDataType(QZGetDataType<QZBase>()));
  EXPECT_FALSE(copy->IsDataType(QZGetDataType<QZContainer>()));
}

TEST(Annotation, WithoutFourBytesOfColorIsWhite) {
  Messages messages;
  QZAnnotation shape;
  EXPECT_TRUE(shape.GetColor() == QZWhite);
  EXPECT_STREQ(shape.GetTitle(), "");
  shape.SetData<char*>("color", "abc", 3);
  EXPECT_TRUE(shape.GetColor() == QZWhite);
  EXPECT_EQ(messages.Take(), "");
  shape.SetBaseData(std::make_unique<QZBaseDataT<int>>(QZGetTag("color"), 5).get());
  EXPECT_TRUE(shape.GetColor() == QZWhite);
  EXPECT_EQ(messages.Take(), "Warning: data type mismatch found when using generic data\n");
}

// What each kind of shape holds behind its type, title and colour.
TEST(Annotation, EachShapeHasItsValues) {
  Messages messages;
  const float points[] = {1, 2, 3, 4, 5, 6};
  const struct {
    unsigned int type;
    QZAnnotation shape;
    const char* values;
  } shapes[] = {
      {1, QZAnnotateSphere("x", p, 1.5F, nullptr), "a float* 1 2 3; r float 1.5; "},
      {1, QZAnnotateSphere("x", p, 1.5F, d), "a float* 1 2 3; r float 1.5; hemi float* 0 0 1; "},
      {2, QZAnnotateEllipsoid("x", p, 7, 8, 9, p, q, d),
       "c float* 1 2 3; a float 7; b float 8; rc float 9; d1 float* 1 2 3; d2 float* 4 5 6; d3 float* 0 0 1; "},
      {3, QZAnnotateBox("x", p, q), "a float* 1 2 3; e float* 4 5 6; "},
      {4, QZAnnotateCylinder("x", p, q, 7, 8), "a float* 1 2 3; b float* 4 5 6; r1 float 7; r2 float 8; "},
      {5, QZAnnotateArrow("x", p, q, 7, 8, 9, 10),
       "a float* 1 2 3; b float* 4 5 6; p float 7; r1 float 8; r2 float 9; r3 float 10; "},
      {6, QZAnnotateLine("x", p, q), "a float* 1 2 3; b float* 4 5 6; "},
      {8, QZAnnotateSpline("x", points, 2, 7), "c float* 1 2 3 4 5 6; n int 2; sr int 7; "},
      {9, QZAnnotateSplineSurface("x", points, 2, 7, -8, -9, 10, 11, -12, -13),
       "c float* 1 2 3 4 5 6; n int 2; sr int 7; sgr int -8; xr int -9; w float 10; t float 11; st int -12; s int "
       "-13; "},
      {10, QZAnnotateTorus("x", p, 7, 8, d), "a float* 1 2 3; r1 float 7; r2 float 8; d float* 0 0 1; "},
      {11, QZAnnotateText("x", p, "t"), "a float* 1 2 3; t string t; f bool 0; s float 1; z float 1.5; "},
      {12, QZAnnotateSymbol("x", p, "t"), "a float* 1 2 3; t ?; "},
  };
  for (const auto& each : shapes) {
    EXPECT_EQ(Tell(each.shape),
              "type int " + std::to_string(each.type) + "; title string x; color char* -1 -1 -1 -1; " + each.values);
  }
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(Tell(QZAnnotateLine(nullptr, p, q)).substr(0, 18), "type int 6; color ") << "without a title";
}

TEST(Annotation, ChildrenKeepTheirOrderAndTheirChildren) {
  Messages messages;
  QZAnnotation tree = Tree();
  tree.AddChild(tree);
  EXPECT_EQ(Titles(tree), "branch(leaf note) leaf tree(branch(leaf note) leaf)");
  tree.AddChild(tree.GetData<QZAnnotation>("1"));
  tree.DeleteData("0");
  tree.SetData("0", 5);
  EXPECT_EQ(Titles(tree), "? leaf tree(branch(leaf note) leaf) leaf");
  EXPECT_EQ(messages.Take(), "Warning: data type mismatch found when using generic data\n");
  tree.SetData("children", 2147483647);
  tree.AddChild(QZAnnotation());
  EXPECT_EQ(tree.GetData<int>("children"), 1024 + 11) << "no such number is believed";
}

TEST(Annotation, ComesBackFromItsItemWithItsChildren) {
  QZBinaryIOHandler handler;
  QZInitAnnotationHandlers(handler);
  const auto bytesOf = [&handler](const QZAnnotation& shape) {
    qzosstream out;
    EXPECT_TRUE(QZBinaryWrite(out, shape, handler));
    return out.str();
  };
  QZAnnotation shape, tree = Tree(), read;
  EXPECT_EQ(bytesOf(shape), "") << "nothing to tell";
  shape.SetType(3);
  EXPECT_EQ(Hex(bytesOf(shape)), Hex(Bytes("00 8C 'QZAnnotation' 8F 01 8D 01 3F 00 84 'type' 01 03 00 00 00")));
  tree.AddChild(QZAnnotateSymbol("symbol", p, "lost"));
  const std::string bytes = bytesOf(tree);
  BytesIn in(bytes);
  EXPECT_EQ(QZBinaryRead(in, read, handler), QZBReturn::Success);
  EXPECT_EQ(Titles(read), "branch(leaf note) leaf symbol");
  EXPECT_EQ(bytesOf(read), bytes);
  const QZAnnotation& note = read.GetData<QZAnnotation>("0").GetData<QZAnnotation>("1");
  EXPECT_EQ(note.GetData<std::string>("t"), "text");
  EXPECT_FALSE(note.HasData("f") || read.GetData<QZAnnotation>("2").HasData("t"));
  const std::string body = Written(tree);
  BytesIn bare(body);
  ASSERT_EQ(QZBReadPOD(bare, read = QZAnnotation(), body.size()), QZBReturn::Success);
  EXPECT_EQ(Titles(read), "? ? ?") << "without the handlers";
}

TEST(Annotation, TheHandlersHaveTheirOrder) {
  QZBinaryIOHandler handler;
  QZInitAnnotationHandlers(handler);
  std::string tags;
  for (const QZReadFxnBase& reader : QZIter(handler.GetReadFxns())) tags += std::string(reader.GetTag()) + " ";
  for (const QZWriteFxnBase& writer : QZIter(handler.GetWriteFxns())) tags += std::string(writer.GetTag()) + " ";
  for (const auto& writer : QZIter(handler.GetBaseWriteFxns())) tags += std::string(writer.GetTag()) + " ";
  EXPECT_EQ(tags, "QZAnnotation QZBasePOD QZBaseQZAnnotation QZAnnotation QZBaseQZAnnotation ");
}

}  // namespace
