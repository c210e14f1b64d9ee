#pragma once

#include <rapidjson/document.h>

#include <map>
#include <string>

#include "qz/system/data/base.h"
#include "qz/system/json/write.h"

namespace QZSystem {

/// Teaches the JSON of attached data a class: the word in "type" under which its objects stand in a document, and how
/// they are written and read.
///
///     void ColorHandler::Write(QZBaseData* holder, QZJSONWriter& writer, unsigned int) {
///       writer.StartObject();
///       writer.Key("type");
///       writer.String("color");
///       writer.Key("text");
///       writer.String(static_cast<QZBaseDataT<QZColor>*>(holder)->GetData().GetText(true).c_str());
///       writer.EndObject();
///     }
///     static const bool registered = QZRegisterJSONHandler(new ColorHandler);
///
/// A document is read and written on the thread of its caller, and several may be at a time, so an override keeps no
/// state that isn't guarded. Safe from any thread.
class QZJSONHandlerBase {
 public:
  virtual ~QZJSONHandlerBase() = default;

  /// Makes one value from the object `value`, which has the "type" of this handler, and stores it in `base` under the
  /// tag of `key`. A false is no error: the JSON is then kept as text; an override that does nothing returns it. A
  /// document of this type at the top gives `base` itself, emptied, with the type as `key`.
  virtual bool Read(QZBase& base, const std::string& key, rapidjson::Value& value) = 0;
  /// The same from an array of such objects, which isn't empty: several values of the tag if `multi`, else one vector.
  virtual bool VRead(QZBase& base, const std::string& key, rapidjson::Value& array, bool multi) = 0;
  /// Writes the value in the holder, which is of GetDataType, as one JSON value; the key has been written. What an
  /// override doesn't write becomes null. Values inside are best left to QZGenBaseDataJSON, which counts the levels.
  virtual void Write(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) = 0;
  /// The same for a holder of GetVDataType, as one array.
  virtual void VWrite(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) = 0;

  /// The word in "type".
  [[nodiscard]] virtual std::string GetJsonType() const = 0;
  /// The identity of the class, and that of a vector of it. Null for none: then nothing is written by this handler.
  [[nodiscard]] virtual const void* GetDataType() const = 0;
  [[nodiscard]] virtual const void* GetVDataType() const = 0;
  /// The flavor that Write and VWrite are called with, whatever that of the document.
  [[nodiscard]] virtual unsigned int GetFlavor() const = 0;
};

/// The handlers of the process, by what they answered when they were added.
///
///     QZJSONHandlerBase* handler = QZGetJSONHandlerRegistry().GetHandlerByType("container");
///
/// Handlers are added while programs and libraries are loaded; from then on look-ups are safe from any thread. One
/// thread at a time.
class QZJSONHandlerRegistry {
 public:
  QZJSONHandlerRegistry() = default;
  QZJSONHandlerRegistry(const QZJSONHandlerRegistry&) = delete;
  QZJSONHandlerRegistry& operator=(const QZJSONHandlerRegistry&) = delete;
  /// Deletes all handlers.
  ~QZJSONHandlerRegistry();

  /// Takes over the handler, which stands for its word and its two identities from now on, in place of earlier ones. A
  /// handler that stands for nothing any more is deleted. Null is passed over.
  void AddHandler(QZJSONHandlerBase* handler);

  /// The handler, which stays the registry's, or null. A word becomes a tag by being looked up.
  [[nodiscard]] QZJSONHandlerBase* GetHandlerByType(const std::string& type) const;
  [[nodiscard]] QZJSONHandlerBase* GetHandlerByType(const char* type) const;
  [[nodiscard]] QZJSONHandlerBase* GetHandlerByType(const void* dataType) const;
  [[nodiscard]] QZJSONHandlerBase* GetVHandlerByType(const void* vectorDataType) const;

  /// Deletes all handlers.
  void Clear();

 private:
  void DeleteUnlessHeld(QZJSONHandlerBase* handler);

  std::map<unsigned int, QZJSONHandlerBase*> byWord;
  std::map<const void*, QZJSONHandlerBase*> byType;
  std::map<const void*, QZJSONHandlerBase*> byVectorType;
};

/// The registry of the process. It holds the handler for containers from the start, and works from any static
/// initialiser on. At exit the handlers are deleted; whoever looks later finds one for containers and no other.
[[nodiscard]] QZJSONHandlerRegistry& QZGetJSONHandlerRegistry();

/// These forward to it. Registering is for load time, by a static initialiser; always true.
bool QZRegisterJSONHandler(QZJSONHandlerBase* handler);
[[nodiscard]] QZJSONHandlerBase* QZGetJSONHandlerByType(const std::string& type);
[[nodiscard]] QZJSONHandlerBase* QZGetJSONHandlerByType(const char* type);
[[nodiscard]] QZJSONHandlerBase* QZGetJSONHandlerByType(const void* dataType);
[[nodiscard]] QZJSONHandlerBase* QZGetJSONVHandlerByType(const void* vectorDataType);

/// Nests containers: each is an object with "type", "version" and the members of a document. Safe from any thread.
class QZContainerJSONHandler : public QZJSONHandlerBase {
 public:
  /// False when the object has no version that fits, or can't be read to its end; or when the tag has a value of
  /// another type.
  bool Read(QZBase& base, const std::string& key, rapidjson::Value& value) override;
  /// False at the first element that Read would refuse; with `multi` those before it have been stored.
  bool VRead(QZBase& base, const std::string& key, rapidjson::Value& array, bool multi) override;
  void Write(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) override;
  void VWrite(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) override;

  [[nodiscard]] std::string GetJsonType() const override;
  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] const void* GetVDataType() const override;
  /// 0: the escapes of the outer document don't reach the containers in it.
  [[nodiscard]] unsigned int GetFlavor() const override;
};

/// A new handler for containers; the caller deletes it, or hands it on.
[[nodiscard]] QZJSONHandlerBase* QZInitContainerJSONHandler();

}  // namespace QZSystem
