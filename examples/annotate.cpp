// Makes a scene of every kind of shape from the atoms of quartz, stores it with its provenance, reads it back, and
// prints both.
#include <algorithm>
#include <iterator>

#include <qz/system.h>

using namespace QZSystem;

namespace {

const char settings[] = R"(
!BRIEF annotate [-out <file>]
!PARAMETER -out
  !TYPE string
  !DEFAULT scene.qzb
  !BRIEF Where the scene is stored
!END
)";

// The three atoms of silicon and the six of oxygen in the unit cell of alpha-quartz, in Angstrom.
struct Atom {
  const char* element;
  float place[3];
};
const Atom atoms[] = {
    {"Si", {2.31F, 0.00F, 0.00F}}, {"Si", {-1.15F, 2.00F, 3.60F}}, {"Si", {1.30F, 2.25F, 1.80F}},
    {"O", {1.38F, 1.14F, 0.64F}},  {"O", {0.30F, 1.77F, 2.96F}},   {"O", {0.78F, 3.02F, 4.24F}},
    {"O", {3.24F, 1.34F, 4.76F}},  {"O", {2.16F, 0.71F, 1.16F}},   {"O", {-0.48F, 3.54F, 2.44F}},
};

// Every kind of shape has its use: an atom is a sphere, a bond a cylinder, the cell a box, and so on.
QZAnnotation MakeScene() {
  const float* const silicon = atoms[0].place;
  const float* const oxygen = atoms[3].place;
  const float cell[] = {4.91F, 4.25F, 5.40F}, origin[] = {0, 0, 0};
  const float x[] = {1, 0, 0}, y[] = {0, 1, 0}, z[] = {0, 0, 1};
  float chain[3 * std::size(atoms)];
  for (std::size_t i = 0; i < std::size(atoms); ++i) std::copy_n(atoms[i].place, 3, chain + 3 * i);

  QZAnnotation scene = QZAnnotateBox("quartz", origin, cell);
  for (const Atom& atom : atoms) {
    const bool isSilicon = std::string(atom.element) == "Si";
    QZAnnotation sphere = QZAnnotateSphere(atom.element, atom.place, isSilicon ? 1.1F : 0.7F, nullptr);
    sphere.SetColor(isSilicon ? QZYellow : QZRed);
    scene.AddChild(sphere);
  }
  scene.AddChild(QZAnnotateEllipsoid("vibration", silicon, 0.4F, 0.3F, 0.2F, x, y, z));
  scene.AddChild(QZAnnotateCylinder("bond", silicon, oxygen, 0.15F, 0.15F));
  scene.AddChild(QZAnnotateArrow("dipole", silicon, oxygen, 0.8F, 0.1F, 0.2F, 0.0F));
  scene.AddChild(QZAnnotateLine("screw axis", origin, z));
  scene.AddChild(QZAnnotateSpline("chain", chain, std::size(atoms), 8));
  scene.AddChild(QZAnnotateSplineSurface("ribbon", chain, std::size(atoms), 8, 2, 1, 0.5F, 0.1F, 0, 1));
  scene.AddChild(QZAnnotateTorus("ring", oxygen, 1.2F, 0.2F, z));
  scene.AddChild(QZAnnotateSymbol("centre", silicon, "x"));
  scene.AddChild(QZAnnotateText("label", silicon, "Si"));
  return scene;
}

// What any program needs to read or write the file.
QZBinaryIOHandler MakeHandler() {
  QZBinaryIOHandler handler;
  QZInitAnnotationHandlers(handler);
  handler.SetReadFxn(QZBasePODReadFxn<QZHeader>(), false);
  return handler;
}

void Print(const QZAnnotation& shape, int depth) {
  for (int i = 0; i < depth; ++i) qzout << "  ";
  qzout << shape.GetTitle() << " (kind " << shape.GetType() << ", " << shape.GetColor().GetText(false) << ")" << qzendl;
  for (const QZAnnotation& child : QZIter(shape.GetChildren())) Print(child, depth + 1);
}

}  // namespace

int main(int argc, char** argv) {
  QZInterface itf(settings, argc, argv);
  const std::string name = itf.GetParameter("-out")->GetStringValue();
  const QZBinaryIOHandler handler = MakeHandler();

  qzofstream out;
  out.open(name);
  const QZHeader stamp(argc, argv, "annotate", "1.0", "a scene of quartz", itf, nullptr);
  if (!QZBWriteQZBase(out, stamp, "QZBasePOD", handler) || !QZBinaryWrite(out, MakeScene(), handler) || !out.close()) {
    QZThrow.Fatal("Cannot write %s", name.c_str());
  }

  qzifstream in;
  in.open(name);
  QZHeader header;
  QZAnnotation scene;
  unsigned int code = QZBinaryRead(in, header, handler);
  if (code == QZBReturn::Success) code = QZBinaryRead(in, scene, handler);
  if (code != QZBReturn::Success) QZThrow.Fatal("Cannot read %s: %s", name.c_str(), QZGetQZBReturnString(code));

  qzout << header.GetProgram() << " " << header.GetVersion() << " " << header.GetCommandLine() << ": "
        << header.GetComment() << qzendl;
  Print(scene, 0);
}
