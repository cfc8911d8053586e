/* A method invocation, without what is particular to a protocol. */
#ifndef VX_API_BASE_WEB_SERVICE_METHOD_INVOCATION_H
#define VX_API_BASE_WEB_SERVICE_METHOD_INVOCATION_H

#include <BQ/BQBase.h>
#include <VX/VXMethodInvocation.h>

#include "api/base/VXSerializerBase.h"

namespace vx {

class VXRunLoopSource;
class WebServiceResult;

class WebServiceMethodInvocation : public VXSerializerBase {
 public:
  WebServiceMethodInvocation() = default;
  /* From a serialized form; entries of another kind than they should be count as missing. */
  explicit WebServiceMethodInvocation(const BQDictionary* agreement);
  ~WebServiceMethodInvocation() override;

  virtual void setServiceEndpoint(const BQURL* url);
  /* The endpoint, borrowed; may be null. */
  virtual const BQURL* getServiceURL();
  /* Retains both; either may be null. Without an order the dictionary's keys are the order. */
  virtual void setParameters(const BQDictionary* parameters, const BQArray* parameterOrder);
  /* Gives copies, owned by the caller, of what is asked for. */
  virtual void getParameters(const BQDictionary** outParameters, const BQArray** outParameterOrder);

  /* The serialized form as a dictionary, owned by the caller. */
  virtual BQDictionary* copyAgreement() = 0;
  /* The request document, owned by the caller; null if none can be made. May give a content type. */
  virtual const BQData* constructMessage(const BQString** outContentType) = 0;
  /* Fills a result from the tree of a reply. */
  virtual void parseReply(WebServiceResult* result, const BQTree* tree) = 0;
  /* A new source that carries one call, owned by the caller. */
  virtual VXRunLoopSource* createRunLoopSource() = 0;

  /* The source, borrowed. It is made when it is first needed, with the endpoint of that moment. */
  VXRunLoopSource* getSource();
  /* The same for what starts a call: a source whose call has ended gives way to a new one. */
  VXRunLoopSource* getSourceForCall();

  /* Ends a call that is under way, without a callback. False if this is called from inside the call. */
  bool giveUpCall();
  /* Whether the call will still give a result, and a run of that mode brings it about. */
  bool waitsIn(BQRunLoop* runLoop, const BQString* mode) const;

  /* Replaces the callback and its context. Both may be null. */
  void setCallback(VXInvocationCallbackFunc function, const VXClientContext* context);

  /*
   * Hands a copy of the result to the callback, if there is one. The callback may destroy the
   * invocation: nothing of it may be touched afterwards.
   */
  void doCallback(WebServiceResult* result);

  /* Adds to a serialized form what is common to the protocols. */
  void populateAgreement(BQDictionary* agreement) const;

 private:
  Owned<const BQURL> serviceURL;

 protected:
  Owned<const BQArray> paramOrder;
  Owned<const BQDictionary> params;

 private:
  bool isCallOver() const;
  void dropSource();

  VXInvocationCallbackFunc callback = nullptr;
  VXClientContext clientContext = {};
  VXRunLoopSource* source = nullptr;
};

}  // namespace vx

#endif
