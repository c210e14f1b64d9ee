#pragma once

/// The data-flow layer, namespace QZDataFlow: records, their fields, metadata and value types, their bytes and their
/// JSON, and streams of them. The layers above come with it.

#include "qz/dataflow/base85.h"
#include "qz/dataflow/buffer.h"
#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/field.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/fieldtypehandler.h"
#include "qz/dataflow/jsonobject.h"
#include "qz/dataflow/metadata.h"
#include "qz/dataflow/metadatakeys.h"
#include "qz/dataflow/names.h"
#include "qz/dataflow/range.h"
#include "qz/dataflow/readbuffer.h"
#include "qz/dataflow/recordbytes.h"
#include "qz/dataflow/recordio.h"
#include "qz/dataflow/recordjson.h"
#include "qz/dataflow/writebuffer.h"
#include "qz/system.h"
