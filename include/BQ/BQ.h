/* All of the platform layer. */
#ifndef BQ_BQ_H
#define BQ_BQ_H

#include <BQ/BQArray.h>
#include <BQ/BQBase.h>
#include <BQ/BQBoolean.h>
#include <BQ/BQBundle.h>
#include <BQ/BQData.h>
#include <BQ/BQDate.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQHTTPMessage.h>
#include <BQ/BQNull.h>
#include <BQ/BQNumber.h>
#include <BQ/BQObject.h>
#include <BQ/BQPropertyList.h>
#include <BQ/BQReadStream.h>
#include <BQ/BQRef.h>
#include <BQ/BQRunLoop.h>
#include <BQ/BQRuntime.h>
#include <BQ/BQStream.h>
#include <BQ/BQString.h>
#include <BQ/BQStringEncoding.h>
#include <BQ/BQTree.h>
#include <BQ/BQURL.h>
#include <BQ/BQXMLNode.h>
#include <BQ/BQXMLParser.h>

#endif
