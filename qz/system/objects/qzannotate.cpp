#include "qz/system/objects/qzannotate.h"

#include <cassert>
#include <climits>
#include <string>

#include "qz/system/frame/itervector.h"
#include "qz/system/objects/numbered_impl.h"
#include "qz/system/qzb/qzbrfxn.h"
#include "qz/system/qzb/qzbwfxn.h"

namespace QZSystem {

namespace {

constexpr const char* itemName = "QZAnnotation";
constexpr const char* valueName = "QZBaseQZAnnotation";
constexpr const char* dataName = "QZBasePOD";

// The names of the values that every shape may have, as files have them.
constexpr const char* typeName = "type";
constexpr const char* titleName = "title";
constexpr const char* renderName = "render";
constexpr const char* colorName = "color";
constexpr const char* childrenName = "children";

constexpr unsigned int colorSize = 4;

enum Kind : unsigned int {
  Sphere = 1,
  Ellipsoid = 2,
  Box = 3,
  Cylinder = 4,
  Arrow = 5,
  Line = 6,
  Spline = 8,
  SplineSurface = 9,
  Torus = 10,
  Text = 11,
  Symbol = 12
};

void SetPoints(QZAnnotation& shape, const char* name, const float* points, unsigned int count) {
  assert(points && count <= UINT_MAX / 3);
  shape.SetData<float*>(name, points, 3 * count);
}

void SetPoint(QZAnnotation& shape, const char* name, const float* point) { SetPoints(shape, name, point, 1); }

// A shape of which two points tell the place.
QZAnnotation Between(Kind kind, const char* title, const float* first, const char* secondName, const float* second) {
  QZAnnotation shape(kind, title);
  SetPoint(shape, "a", first);
  SetPoint(shape, secondName, second);
  return shape;
}

QZAnnotation Along(Kind kind, const char* title, const float* points, unsigned int count, unsigned int resolution) {
  QZAnnotation shape(kind, title);
  SetPoints(shape, "c", points, count);
  shape.SetData("n", count);
  shape.SetData("sr", resolution);
  return shape;
}

}  // namespace

QZAnnotation::QZAnnotation(unsigned int type, const char* title) {
  SetType(type);
  SetTitle(title);
  SetColor(QZWhite);
}

QZAnnotation::~QZAnnotation() = default;

const void* QZAnnotation::GetDataType() const { return QZGetDataType<QZAnnotation>(); }

bool QZAnnotation::IsDataType(const void* type) const {
  return type == QZGetDataType<QZAnnotation>() || QZBase::IsDataType(type);
}

QZAnnotation* QZAnnotation::CreateCopy() const { return new QZAnnotation(*this); }

const char* QZAnnotation::GetTitle() const { return GetData<std::string>(titleName).c_str(); }

unsigned int QZAnnotation::GetType() const { return GetData<unsigned int>(typeName); }

unsigned int QZAnnotation::GetRenderHint() const { return GetData<unsigned int>(renderName); }

QZColor QZAnnotation::GetColor() const {
  unsigned int size = 0;
  const char* const bytes = GetData<char*>(colorName, &size);
  return size < colorSize ? QZWhite : QZColor(reinterpret_cast<const unsigned char*>(bytes));
}

QZIterBase<QZAnnotation>* QZAnnotation::GetChildren() const {
  return new QZCacheIter<QZAnnotation>(Numbered<QZAnnotation>(*this, NumberedCount(*this, childrenName)));
}

void QZAnnotation::SetTitle(const char* title) {
  if (title) {
    SetData(titleName, std::string(title));
  } else {
    DeleteData(titleName);
  }
}

void QZAnnotation::SetType(unsigned int type) { SetData(typeName, static_cast<int>(type)); }

void QZAnnotation::SetRenderHint(unsigned int hint) { SetData(renderName, static_cast<int>(hint)); }

void QZAnnotation::SetColor(const QZColor& color) {
  SetData<char*>(colorName, reinterpret_cast<const char*>(color.GetRGBA()), colorSize);
}

void QZAnnotation::AddChild(const QZAnnotation& child) {
  const unsigned int index = NumberedCount(*this, childrenName);
  AddData(QZGetTag(std::to_string(index)), child);
  SetData(childrenName, static_cast<int>(index + 1));
}

QZAnnotation QZAnnotateSphere(const char* title, const float* a, float r, const float* hemi) {
  QZAnnotation shape(Sphere, title);
  SetPoint(shape, "a", a);
  shape.SetData("r", r);
  if (hemi) SetPoint(shape, "hemi", hemi);
  return shape;
}

// The third half axis isn't "c": that is the centre, also in all files so far.
QZAnnotation QZAnnotateEllipsoid(const char* title, const float* c, float a, float b, float radiusC, const float* d1,
                                 const float* d2, const float* d3) {
  QZAnnotation shape(Ellipsoid, title);
  SetPoint(shape, "c", c);
  shape.SetData("a", a);
  shape.SetData("b", b);
  shape.SetData("rc", radiusC);
  SetPoint(shape, "d1", d1);
  SetPoint(shape, "d2", d2);
  SetPoint(shape, "d3", d3);
  return shape;
}

QZAnnotation QZAnnotateBox(const char* title, const float* a, const float* e) { return Between(Box, title, a, "e", e); }

QZAnnotation QZAnnotateCylinder(const char* title, const float* a, const float* b, float r1, float r2) {
  QZAnnotation shape = Between(Cylinder, title, a, "b", b);
  shape.SetData("r1", r1);
  shape.SetData("r2", r2);
  return shape;
}

QZAnnotation QZAnnotateArrow(const char* title, const float* a, const float* b, float p, float r1, float r2, float r3) {
  QZAnnotation shape = Between(Arrow, title, a, "b", b);
  shape.SetData("p", p);
  shape.SetData("r1", r1);
  shape.SetData("r2", r2);
  shape.SetData("r3", r3);
  return shape;
}

QZAnnotation QZAnnotateLine(const char* title, const float* a, const float* b) {
  return Between(Line, title, a, "b", b);
}

QZAnnotation QZAnnotateSpline(const char* title, const float* c, unsigned int n, unsigned int sr) {
  return Along(Spline, title, c, n, sr);
}

QZAnnotation QZAnnotateSplineSurface(const char* title, const float* c, unsigned int n, unsigned int sr, int sgr,
                                     int xr, float w, float t, int st, int s) {
  QZAnnotation shape = Along(SplineSurface, title, c, n, sr);
  shape.SetData("sgr", sgr);
  shape.SetData("xr", xr);
  shape.SetData("w", w);
  shape.SetData("t", t);
  shape.SetData("st", st);
  shape.SetData("s", s);
  return shape;
}

QZAnnotation QZAnnotateTorus(const char* title, const float* a, float r1, float r2, const float* d) {
  QZAnnotation shape(Torus, title);
  SetPoint(shape, "a", a);
  shape.SetData("r1", r1);
  shape.SetData("r2", r2);
  SetPoint(shape, "d", d);
  return shape;
}

QZAnnotation QZAnnotateText(const char* title, const float* a, const char* text) {
  assert(text);
  QZAnnotation shape(Text, title);
  SetPoint(shape, "a", a);
  shape.SetData("t", std::string(text));
  shape.SetData("f", false);
  shape.SetData("s", 1.0F);
  shape.SetData("z", 1.5F);
  return shape;
}

QZAnnotation QZAnnotateSymbol(const char* title, const float* a, const char* t) {
  QZAnnotation shape(Symbol, title);
  SetPoint(shape, "a", a);
  shape.SetData("t", t);
  return shape;
}

const char* QZAnnotationPODWriteFxn::GetTag() const { return dataName; }

const void* QZAnnotationPODWriteFxn::GetType() const { return QZGetDataType<QZAnnotation>(); }

QZAnnotationPODWriteFxn* QZAnnotationPODWriteFxn::CreateCopy() const { return new QZAnnotationPODWriteFxn(*this); }

bool QZAnnotationPODWriteFxn::operator()(qzostream& out, const QZAnnotation& shape,
                                         const QZBinaryIOHandlerBase& handler) const {
  return QZBWriteQZBase(out, shape, GetTag(), handler);
}

void QZInitAnnotationHandlers(QZBinaryIOHandlerBase& handler) {
  handler.SetReadFxn(QZGroupReadFxn<QZAnnotation, QZAnnotation>(itemName), false);
  handler.SetReadFxn(QZBasePODReadFxn<QZAnnotation>(), false);
  QZCollectWriteFxn<QZAnnotation> writer(false, "gz", itemName);
  writer.AddWriteFxn(QZAnnotationPODWriteFxn());
  handler.SetWriteFxn(writer, false);
  QZInstallGenericDataHandler<QZAnnotation>(handler, valueName);
}

template class QZBaseDataT<QZAnnotation>;

}  // namespace QZSystem
