#include "qz/system/objects/qzannotate.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "qz/system/data/container.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/qzbrfxn.h"
#include "qz/system/qzb/qzbwfxn.h"
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
  QZAnnotation leaf = QZAnnotateLine("leaf", p, q);
  QZAnnotation branch = QZAnnotateSphere("branch", p, 1, nullptr);
  branch.AddChild(leaf);
  branch.AddChild(QZAnnotateText("note", q, "text"));
  QZAnnotation tree = QZAnnotateBox("tree", p, q);
  tree.AddChild(branch);
  tree.AddChild(leaf);
  return tree;
}

TEST(Annotation, AnEmptyOneIsWhite) {
  QZAnnotation empty;
  EXPECT_EQ(Tell(empty), "");
  EXPECT_EQ(empty.GetType(), 0U);
  EXPECT_STREQ(empty.GetTitle(), "");
  EXPECT_EQ(empty.GetRenderHint(), 0U);
  EXPECT_TRUE(empty.GetColor() == QZWhite);
  EXPECT_FALSE(QZIter(empty.GetChildren()));
}

TEST(Annotation, KnowsItsTypeAndThatOfItsBase) {
  const QZAnnotation shape(1, "x");
  const std::unique_ptr<QZBase> copy(shape.CreateCopy());
  EXPECT_EQ(copy->GetDataType(), QZGetDataType<QZAnnotation>());
  EXPECT_TRUE(copy->IsDataType(QZGetDataType<QZAnnotation>()));
  EXPECT_TRUE(copy->IsDataType(QZGetDataType<QZBase>()));
  EXPECT_FALSE(copy->IsDataType(QZGetDataType<QZContainer>()));
  EXPECT_EQ(Tell(*copy), "type int 1; title string x; color char* -1 -1 -1 -1; ");
}

TEST(Annotation, EachValueIsSetInItsPlace) {
  QZAnnotation shape(1, "x");
  shape.SetColor(QZRed);
  shape.SetRenderHint(0xFFFFFFFFU);
  shape.SetTitle("y");
  shape.SetType(2);
  shape.SetColor(QZGreen);
  EXPECT_EQ(Tell(shape), "type int 2; title string y; color char* 0 -1 0 -1; render int -1; ");
  EXPECT_TRUE(shape.GetColor() == QZGreen);
  EXPECT_EQ(shape.GetRenderHint(), 0xFFFFFFFFU);
  EXPECT_STREQ(shape.GetTitle(), "y");
  shape.SetTitle(nullptr);
  EXPECT_FALSE(shape.HasData("title"));
  EXPECT_STREQ(shape.GetTitle(), "");
}

TEST(Annotation, AColorNeedsFourBytes) {
  Messages messages;
  QZAnnotation shape;
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
  const char text[] = "kept";
  const QZAnnotation copy = QZAnnotateSymbol(nullptr, p, text);
  EXPECT_EQ(copy.GetData<const char*>("t"), text);
  EXPECT_FALSE(copy.HasData("title"));
}

TEST(Annotation, ChildrenKeepTheirOrderAndTheirChildren) {
  QZAnnotation tree = Tree();
  EXPECT_EQ(Titles(tree), "branch(leaf note) leaf");
  EXPECT_EQ(tree.GetData<int>("children"), 2);
  tree.AddChild(tree);
  EXPECT_EQ(Titles(tree), "branch(leaf note) leaf tree(branch(leaf note) leaf)");
  tree.AddChild(tree.GetData<QZAnnotation>("1"));
  EXPECT_EQ(Titles(tree), "branch(leaf note) leaf tree(branch(leaf note) leaf) leaf");
}

TEST(Annotation, AMissingChildIsEmpty) {
  Messages messages;
  QZAnnotation tree = Tree();
  tree.DeleteData("0");
  EXPECT_EQ(Titles(tree), "? leaf");
  tree.SetData("0", std::string("no shape"));
  EXPECT_EQ(Titles(tree), "? leaf");
  EXPECT_EQ(messages.Take(), "Warning: data type mismatch found when using generic data\n");
  for (const int count : {-1, 2147483647}) {
    tree.SetData("children", count);
    std::size_t found = 0;
    for (QZIter children(tree.GetChildren()); children; ++children) ++found;
    EXPECT_EQ(found, count < 0 ? 0U : 1024U + 9U) << count;
    tree.AddChild(QZAnnotation());
    EXPECT_EQ(tree.GetData<int>("children"), static_cast<int>(found) + 1) << count;
  }
}

QZBinaryIOHandler Handler() {
  QZBinaryIOHandler handler;
  QZInitAnnotationHandlers(handler);
  return handler;
}

std::string Bytes(const QZAnnotation& shape, const QZBinaryIOHandlerBase& handler) {
  qzosstream out;
  EXPECT_TRUE(QZBinaryWrite(out, shape, handler));
  return out.str();
}

QZAnnotation Shape(const std::string& bytes, const QZBinaryIOHandlerBase& handler) {
  BytesIn in(bytes);
  QZAnnotation shape;
  EXPECT_EQ(QZBinaryRead(in, shape, handler), QZBReturn::Success);
  return shape;
}

TEST(Annotation, AnItemHoldsTheDataOfTheShape) {
  QZAnnotation shape;
  shape.SetType(3);
  EXPECT_EQ(Hex(Bytes(shape, Handler())),
            Hex(QZSystem::Bytes("00 8C 'QZAnnotation' 8F 01 8D 01 3F 00 84 'type' 01 03 00 00 00")));
  EXPECT_EQ(Bytes(QZAnnotation(), Handler()), "") << "nothing to tell";
}

TEST(Annotation, ComesBackWithItsChildren) {
  const QZBinaryIOHandler handler = Handler();
  QZAnnotation tree = Tree();
  tree.SetColor(QZRed);
  tree.AddChild(QZAnnotateSpline("spline", p, 1, 7));
  const std::string bytes = Bytes(tree, handler);
  const QZAnnotation read = Shape(bytes, handler);
  EXPECT_EQ(Titles(read), "branch(leaf note) leaf spline");
  EXPECT_EQ(Bytes(read, handler), bytes);
  EXPECT_TRUE(read.GetColor() == QZRed);
  const QZAnnotation& note = read.GetData<QZAnnotation>("0").GetData<QZAnnotation>("1");
  EXPECT_EQ(note.GetData<std::string>("t"), "text");
  EXPECT_FALSE(note.HasData("f"));
  EXPECT_FALSE(note.GetData<bool>("f"));
}

TEST(Annotation, RidesOnOtherObjects) {
  const QZBinaryIOHandler handler = Handler();
  QZContainer object;
  object.SetData("site", Tree());
  object.SetData("symbol", QZAnnotateSymbol("s", p, "lost"));
  const std::string body = Written(object, handler);
  BytesIn in(body);
  QZContainer read;
  ASSERT_EQ(QZBReadQZBase(in, read, body.size(), handler), QZBReturn::Success);
  EXPECT_EQ(Titles(read.GetData<QZAnnotation>("site")), "branch(leaf note) leaf");
  EXPECT_STREQ(read.GetData<QZAnnotation>("symbol").GetTitle(), "s");
  EXPECT_FALSE(read.GetData<QZAnnotation>("symbol").HasData("t"));

  // A program that doesn't know shapes passes them on.
  BytesIn again(body);
  QZContainer unknowing;
  ASSERT_EQ(QZBReadPOD(again, unknowing, body.size()), QZBReturn::Success);
  EXPECT_EQ(Hex(Written(unknowing)), Hex(body));
}

TEST(Annotation, WithoutTheHandlersTheChildrenAreEmpty) {
  const QZAnnotation tree = Tree();
  const std::string body = Written(tree);
  BytesIn in(body);
  QZAnnotation read;
  ASSERT_EQ(QZBReadPOD(in, read, body.size()), QZBReturn::Success);
  EXPECT_EQ(read.GetData<int>("children"), 2);
  EXPECT_EQ(Titles(read), "? ?");
}

TEST(Annotation, TheHandlersHaveTheirOrder) {
  const QZBinaryIOHandler handler = Handler();
  std::string tags;
  for (const QZReadFxnBase& reader : QZIter(handler.GetReadFxns())) tags += std::string(reader.GetTag()) + " ";
  for (const QZWriteFxnBase& writer : QZIter(handler.GetWriteFxns())) tags += std::string(writer.GetTag()) + " ";
  for (const auto& writer : QZIter(handler.GetBaseWriteFxns())) tags += std::string(writer.GetTag()) + " ";
  EXPECT_EQ(tags, "QZAnnotation QZBasePOD QZBaseQZAnnotation QZAnnotation QZBaseQZAnnotation ");
}

}  // namespace
