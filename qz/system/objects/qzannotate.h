#pragma once

#include "qz/system/data/base.h"
#include "qz/system/frame/iterbase.h"
#include "qz/system/qzb/qzbhand.h"
#include "qz/system/util/color.h"

namespace QZSystem {

/// A shape in space that rides along with data: titled, coloured, perhaps with other shapes as its children. The
/// functions QZAnnotateSphere and so on, below, make each kind of shape.
///
///     QZAnnotation site = QZAnnotateSphere("active site", centre, 8.5F, nullptr);
///     site.SetColor(QZRed);
///     site.AddChild(QZAnnotateText("", centre, "His 57"));
///     protein.SetData("site", site);
///
/// It is attached data and nothing else, under names that every program may know: "type", "title", "render", "color",
/// "children", the children under "0", "1" and so on, and what its kind adds. A value that isn't there reads as 0, "",
/// or white; so does one of another type, after the Warning of QZBase::GetData.
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZAnnotation : public QZBase {
 public:
  QZAnnotation() = default;
  /// A white shape.
  QZAnnotation(unsigned int type, const char* title);
  QZAnnotation(const QZAnnotation&) = default;
  QZAnnotation(QZAnnotation&&) noexcept = default;
  QZAnnotation& operator=(const QZAnnotation&) = default;
  QZAnnotation& operator=(QZAnnotation&&) noexcept = default;
  ~QZAnnotation() override;

  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;
  [[nodiscard]] QZAnnotation* CreateCopy() const override;

  /// The title, good until it is changed.
  [[nodiscard]] const char* GetTitle() const;
  /// The kind of shape, as the functions below number them.
  [[nodiscard]] unsigned int GetType() const;
  /// A number for the program that draws.
  [[nodiscard]] unsigned int GetRenderHint() const;
  [[nodiscard]] QZColor GetColor() const;

  /// A new iterator over copies of the children, in the order in which they were added; the caller deletes it. Children
  /// that "children" counts and that aren't there are empty shapes; more than 1024 of those aren't believed.
  [[nodiscard]] QZIterBase<QZAnnotation>* GetChildren() const;

  /// Sets the title; null deletes it.
  void SetTitle(const char* title);
  void SetType(unsigned int type);
  void SetRenderHint(unsigned int hint);
  void SetColor(const QZColor& color);

  /// Adds a copy of a shape, with its children, behind the other children. It may be this one, or be attached to it.
  void AddChild(const QZAnnotation& child);
};

/// The shapes, white, each with its number as type. Points, directions and centres are three numbers, lengths are in
/// the units of the points. REQUIRES: no pointer is null, but for titles and for `hemi`.
///
/// Sphere (1) about "a" with radius "r", cut to the half that lies in the direction "hemi" if there is one.
[[nodiscard]] QZAnnotation QZAnnotateSphere(const char* title, const float* a, float r, const float* hemi);

/// Ellipsoid (2) about "c" with the half axes "a", "b" and "rc" in the directions "d1", "d2" and "d3".
[[nodiscard]] QZAnnotation QZAnnotateEllipsoid(const char* title, const float* c, float a, float b, float radiusC,
                                               const float* d1, const float* d2, const float* d3);

/// Box (3) with the opposite corners "a" and "e".
[[nodiscard]] QZAnnotation QZAnnotateBox(const char* title, const float* a, const float* e);

/// Cylinder (4) from "a" to "b", with the radii "r1" and "r2" there.
[[nodiscard]] QZAnnotation QZAnnotateCylinder(const char* title, const float* a, const float* b, float r1, float r2);

/// Arrow (5) from "a" to "b", with the numbers "p", "r1", "r2" and "r3" of its shaft and head.
[[nodiscard]] QZAnnotation QZAnnotateArrow(const char* title, const float* a, const float* b, float p, float r1,
                                           float r2, float r3);

/// Line (6) from "a" to "b".
[[nodiscard]] QZAnnotation QZAnnotateLine(const char* title, const float* a, const float* b);

/// Spline (8) over `n` points "c", 3 n numbers, with the number "sr". REQUIRES: `n` below 2^32 / 3.
[[nodiscard]] QZAnnotation QZAnnotateSpline(const char* title, const float* c, unsigned int n, unsigned int sr);

/// Surface along a spline (9), with the numbers "sgr", "xr", "w", "t", "st" and "s" beside those of the spline.
/// REQUIRES: as for the spline.
[[nodiscard]] QZAnnotation QZAnnotateSplineSurface(const char* title, const float* c, unsigned int n, unsigned int sr,
                                                   int sgr, int xr, float w, float t, int st, int s);

/// Torus (10) about "a" with the radii "r1" and "r2" and the axis "d".
[[nodiscard]] QZAnnotation QZAnnotateTorus(const char* title, const float* a, float r1, float r2, const float* d);

/// Text (11) at "a": the text "t", with "f" false, "s" 1 and "z" 1.5.
[[nodiscard]] QZAnnotation QZAnnotateText(const char* title, const float* a, const char* text);

/// Symbol (12) "t" at "a". The text isn't copied: it must outlive the shape and all its copies, and it doesn't go into
/// a stream.
[[nodiscard]] QZAnnotation QZAnnotateSymbol(const char* title, const float* a, const char* t);

/// Writes the data of a shape as an item "QZBasePOD". Const operations may run in parallel; a change needs exclusive
/// access.
class QZAnnotationPODWriteFxn : public QZWriteFxn<QZAnnotation> {
 public:
  [[nodiscard]] const char* GetTag() const override;
  [[nodiscard]] const void* GetType() const override;
  [[nodiscard]] QZAnnotationPODWriteFxn* CreateCopy() const override;
  bool operator()(qzostream& out, const QZAnnotation& shape, const QZBinaryIOHandlerBase& handler) const override;
};

/// Teaches a handler to read and write shapes, as items "QZAnnotation" and attached to other objects, with their
/// children. Read back, an `unsigned int` is an `int`, a `bool` that is false isn't there, nor is the text of a symbol.
void QZInitAnnotationHandlers(QZBinaryIOHandlerBase& handler);

extern template class QZBaseDataT<QZAnnotation>;

}  // namespace QZSystem
