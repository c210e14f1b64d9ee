#pragma once

/// Initialisers: how a library announces the readers and writers of its classes to every program that links it.
///
///     bool TeachCell(QZBinaryIOHandlerBase& handler) { return handler.SetReadFxn(ReadCell(), false); }
///     static const bool announced = QZRegisterQZBInitializer(TeachCell);
///
///     QZBinaryIOHandler handler;
///     QZInitializeHandler(handler);
///
/// The list is filled while the process loads, before other threads start. One thread at a time.
namespace QZSystem {

class QZBinaryIOHandlerBase;

/// A function that teaches a handler, announced by a library when it is loaded.
using QZBInitializer = bool (*)(QZBinaryIOHandlerBase&);

/// Announces an initialiser to the whole process, from any static initialiser on. False, with the list as it was, if
/// the list can't grow.
bool QZRegisterQZBInitializer(QZBInitializer initializer);

/// How many initialisers have been announced.
[[nodiscard]] unsigned int QZGetQZBInitializerCount();

/// Calls all initialisers on a handler, in the order in which they were announced. Those that returned false, because
/// they need what another one brings, get a second call behind all others; for each that fails again there is the
/// Warning "Default Initializer failed during setup.".
void QZInitializeHandler(QZBinaryIOHandlerBase& handler);

}  // namespace QZSystem
