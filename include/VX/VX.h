/* All of the library. */
#ifndef VX_VX_H
#define VX_VX_H

#include <BQ/BQ.h>
#include <VX/VXClientContext.h>
#include <VX/VXConstants.h>
#include <VX/VXDate.h>
#include <VX/VXMethodInvocation.h>
#include <VX/VXOverride.h>
#include <VX/VXProtocolHandler.h>
#include <VX/VXTypes.h>

#endif
