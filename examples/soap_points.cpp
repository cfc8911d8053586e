/*
 * Sends a value of a class of its own to a SOAP server and reads one back: transpose(point), which
 * exchanges x and y:
 *
 *     example_soap_points http://localhost:8080/ 3 4.5
 *
 * prints "(4.5, 3)". Two functions say how a point looks in a document; all else is the library's.
 */
#include <cstdio>
#include <cstdlib>

#include <VX/VX.h>

namespace {

/* An object of a registered class is the runtime's header and behind it whatever the class holds. */
struct Point {
  BQRuntimeBase base;
  double x;
  double y;
};

const BQString* copyPointDescription(BQTypeRef object) {
  auto* point = static_cast<const Point*>(object);
  return BQStringCreateWithFormat(BQSTR("(%g, %g)"), point->x, point->y);
}

BQTypeID pointTypeID() {
  static const BQRuntimeClass pointClass = {
      0, "Point", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, copyPointDescription};
  static const BQTypeID id = _BQRuntimeRegisterClass(&pointClass);
  return id;
}

const Point* createPoint(double x, double y) {
  BQTypeRef object = _BQRuntimeCreateInstance(pointTypeID(), sizeof(Point) - sizeof(BQRuntimeBase));
  auto* point = static_cast<Point*>(const_cast<void*>(object));
  point->x = x;
  point->y = y;
  return point;
}

/* Called with every point of a document that is written. "%@" is where the element's name goes. */
const BQString* writePoint(VXMethodInvocationRef, BQTypeRef value, void*) {
  auto* point = static_cast<const Point*>(value);
  return BQStringCreateWithFormat(BQSTR("<%%@ xmlns:p=\"urn:points\" xsi:type=\"p:Point\">"
                                        "<x xsi:type=\"xsd:double\">%g</x><y xsi:type=\"xsd:double\">%g</y>"
                                        "</%%@>"),
                                  point->x, point->y);
}

/* The number in a child of an element; 0 if it is not there. */
double numberOfChild(const BQTree* element, const BQString* name) {
  for (const BQTree* child = BQTreeGetFirstChild(element); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    if (!BQEqual(BQXMLNodeGetString(BQXMLTreeGetNode(child)), name)) continue;
    const BQXMLNode* text = BQXMLTreeGetNode(BQTreeGetFirstChild(child));
    return text == nullptr ? 0 : BQStringGetDoubleValue(BQXMLNodeGetString(text));
  }
  return 0;
}

/* Called with every element {urn:points}Point of the reply. Null would leave it to the library. */
BQTypeRef readPoint(VXMethodInvocationRef, const BQTree* element, const BQTree*, void*) {
  return createPoint(numberOfChild(element, BQSTR("x")), numberOfChild(element, BQSTR("y")));
}

BQRef<OpaqueVXMethodInvocationRef> createInvocation(const char* address) {
  auto text = BQAdopt(BQStringCreateWithCString(address, kBQStringEncodingUTF8));
  auto url = BQAdopt(BQURLCreateWithString(text.get(), nullptr));
  auto created = BQAdopt(VXMethodInvocationCreate(url.get(), BQSTR("transpose"), kVXSOAP2001Protocol));
  VXMethodInvocationRef invocation = created.get();
  VXMethodInvocationSetProperty(invocation, kVXSOAPBodyEncodingStyle, kVXSOAPStyleRPC);
  VXMethodInvocationSetProperty(invocation, kVXSOAPMethodNamespaceURI, BQSTR("urn:echo"));
  /* The output of the method that is its result; else that would be a dictionary of all outputs. */
  VXMethodInvocationSetProperty(invocation, kVXMethodInvocationResultParameterName, BQSTR("p:Point"));
  VXMethodInvocationAddSerializationOverride(invocation, pointTypeID(), writePoint, nullptr);
  VXMethodInvocationAddDeserializationOverride(invocation, BQSTR("urn:points"), BQSTR("Point"), readPoint,
                                               nullptr);
  return created;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: %s URL X Y\n", argv[0]);
    return 2;
  }
  auto invocation = createInvocation(argv[1]);
  if (!invocation) {
    std::fprintf(stderr, "%s is not a URL\n", argv[1]);
    return 2;
  }

  auto point = BQAdopt(createPoint(std::strtod(argv[2], nullptr), std::strtod(argv[3], nullptr)));
  BQTypeRef name = BQSTR("point"), value = point.get();
  auto parameters = BQAdopt(BQDictionaryCreate(&name, &value, 1));
  VXMethodInvocationSetParameters(invocation.get(), parameters.get(), nullptr);

  auto result = BQAdopt(VXMethodInvocationInvoke(invocation.get()));
  bool failed = VXMethodResultIsFault(result.get());
  auto said = BQAdopt(VXMethodResultCopyDescription(result.get()));
  std::printf("%s%s\n", failed ? "failed: " : "", BQStringGetUTF8Ptr(said.get()));
  BQTypeRef answer = BQDictionaryGetValue(result.get(), kVXMethodInvocationResult);
  bool isPoint = !failed && BQGetTypeID(answer) == pointTypeID();
  return isPoint ? 0 : 1;
}
