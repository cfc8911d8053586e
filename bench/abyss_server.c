/*
 * The peer of bench/serve: add(a, b) on the Abyss server of xmlrpc-c, on a free port of 127.0.0.1,
 * whose number it prints.
 */
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <xmlrpc-c/base.h>
#include <xmlrpc-c/server.h>
#include <xmlrpc-c/server_abyss.h>

static xmlrpc_value* add(xmlrpc_env* env, xmlrpc_value* parameters, void* serverInfo, void* callInfo) {
  (void)serverInfo;
  (void)callInfo;
  xmlrpc_int32 a = 0;
  xmlrpc_int32 b = 0;
  xmlrpc_decompose_value(env, parameters, "(ii)", &a, &b);
  return env->fault_occurred ? NULL : xmlrpc_build_value(env, "i", a + b);
}

static void dieOn(const xmlrpc_env* env) {
  if (!env->fault_occurred) return;
  fprintf(stderr, "abyss_server: %s\n", env->fault_string);
  exit(1);
}

/* A socket that listens, so that nobody who read the port is refused, on a free port, which is printed. */
static int openSocket(void) {
  int descriptor = socket(AF_INET, SOCK_STREAM, 0);
  struct sockaddr_in address = {.sin_family = AF_INET, .sin_addr.s_addr = htonl(INADDR_LOOPBACK)};
  socklen_t length = sizeof address;
  if (bind(descriptor, (struct sockaddr*)&address, sizeof address) != 0 ||
      listen(descriptor, SOMAXCONN) != 0 ||
      getsockname(descriptor, (struct sockaddr*)&address, &length) != 0) {
    perror("abyss_server");
    exit(1);
  }
  printf("%d\n", ntohs(address.sin_port));
  fflush(stdout);
  return descriptor;
}

int main(void) {
  xmlrpc_env env;
  xmlrpc_env_init(&env);
  xmlrpc_registry* registry = xmlrpc_registry_new(&env);
  dieOn(&env);
  struct xmlrpc_method_info3 method = {.methodName = "add", .methodFunction = add};
  xmlrpc_registry_add_method3(&env, registry, &method);
  dieOn(&env);

  xmlrpc_server_abyss_parms parameters = {0};
  parameters.registryP = registry;
  parameters.socket_bound = true;
  parameters.socket_handle = openSocket();
  /* Its own default closes a connection after 30 requests, which would measure the making of connections. */
  parameters.keepalive_timeout = 30;
  parameters.keepalive_max_conn = UINT32_MAX / 2;
  parameters.timeout = 30;
  xmlrpc_server_abyss(&env, &parameters, XMLRPC_APSIZE(socket_handle));
  dieOn(&env);
  return 0;
}
