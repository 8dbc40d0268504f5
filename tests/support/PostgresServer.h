// tests/support/PostgresServer.h - a test's own PostgreSQL server in a fresh folder, reached by a socket in that
// folder.
//
//   PostgresServer server;
//   server.start();
//   EXPECT_EQ(server.query("SELECT 1"), "1");
//
// After useTls() it is also reached by TLS at a free port of 127.0.0.1, with a self-signed certificate. If the test
// runs as root, the server runs as a user without rights, because the server refuses to run as root.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <libpq-fe.h>
#include <netinet/in.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "tests/support/AnotherUser.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik::test {

class PostgresServer {
 public:
  PostgresServer() {
    if (geteuid() == 0) {
      EXPECT_EQ(chown(folder_.path().c_str(), userWithoutRights, userWithoutRights), 0);
    }
    const pid_t maker = run({NORVIK_POSTGRES_FOLDER "/initdb", "-D", folder_.path("data"), "-U", "payroll", "-A",
                             "trust", "-E", "UTF8", "--locale=C", "--no-sync", "--no-instructions"},
                            -1);
    EXPECT_EQ(statusOf(maker), 0) << "initdb";
    std::ofstream(folder_.path("data/pg_hba.conf")) << "local all clerk scram-sha-256\nlocal all all trust\n"
                                                       "hostssl all clerk 127.0.0.1/32 scram-sha-256\n"
                                                       "hostssl all all 127.0.0.1/32 trust\n";
  }
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;
  ~PostgresServer() { stop(SIGQUIT); }

  /// Call it before start().
  void useTls() {
    usesTls_ = true;
    makeCertificate();
  }
  /// Creates another certificate, for the next start().
  void makeCertificate() {
    const pid_t maker =
        run({"/usr/bin/openssl", "req", "-x509", "-nodes", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
             "-subj", "/CN=payroll", "-addext", "subjectAltName=IP:127.0.0.1", "-days", "2", "-keyout",
             folder_.path("data/server.key"), "-out", certificate()},
            -1);
    ASSERT_EQ(statusOf(maker), 0) << "openssl";
  }
  /// The file of the server's certificate.
  [[nodiscard]] std::string certificate() const { return folder_.path("data/server.crt"); }

  /// Returns when the server accepts connections. After a kill this may need several attempts, until the old server's
  /// processes have ended. Without `synchronizes` the server does not wait for the disk; then only a crash of the whole
  /// machine would lose a commit.
  void start(bool synchronizes = false) {
    for (int attempt = 0; attempt < 100 && process_ < 0; ++attempt) {
      int output[2];
      if (pipe2(output, O_CLOEXEC) != 0) return;
      // After a restart, clients find the server at the same port, unless another program has taken the port since.
      if (usesTls_ && (port_ == usualPort || attempt > 0)) port_ = freePort();
      process_ = run({NORVIK_POSTGRES_FOLDER "/postgres", "-D", folder_.path("data"), "-k", folder_.path(), "-p",
                      std::to_string(port_), "-c", usesTls_ ? "listen_addresses=127.0.0.1" : "listen_addresses=", "-c",
                      usesTls_ ? "ssl=on" : "ssl=off", "-c", synchronizes ? "fsync=on" : "fsync=off", "-c",
                      "log_min_messages=log"},
                     output[1]);
      close(output[1]);
      std::string said;
      char byte = 0;
      while (said.find("ready to accept connections") == std::string::npos && read(output[0], &byte, 1) == 1)
        said += byte;
      output_ = output[0];
      if (said.find("ready to accept connections") == std::string::npos) stop(SIGKILL);
    }
    ASSERT_GT(process_, 0) << "the server does not start";
  }
  /// SIGINT ends the server in order, without waiting for its clients. SIGKILL ends it at once.
  void stop(int signal = SIGINT) {
    if (process_ < 0) return;
    kill(process_, signal);
    waitpid(process_, nullptr, 0);
    process_ = -1;
    close(output_);
  }
  /// Stops the server and its processes until resume().
  void suspend() { signalAll(SIGSTOP); }
  void resume() { signalAll(SIGCONT); }

  /// The connection string for the given role and database.
  [[nodiscard]] std::string connection(const std::string& role = "payroll",
                                       const std::string& database = "postgres") const {
    return "host=" + folder_.path() + " port=" + std::to_string(port_) + " user=" + role + " dbname=" + database;
  }
  /// The same as an address. `login` is a role or role:password, encoded as in an address.
  [[nodiscard]] std::string address(const std::string& login = "payroll") const {
    return "postgresql://" + login + "@/postgres?host=" + folder_.path() + "&port=" + std::to_string(port_);
  }
  /// The same by TLS, after useTls().
  [[nodiscard]] std::string tlsConnection(const std::string& role = "payroll",
                                          const std::string& mode = "require") const {
    return "host=127.0.0.1 port=" + std::to_string(port_) + " user=" + role + " dbname=postgres sslmode=" + mode;
  }
  /// The columns of all rows, one after the other, or the message if the statement fails.
  std::string query(const std::string& sql, const std::string& database = "postgres") const {
    PGconn* const client = PQconnectdb(connection("payroll", database).c_str());
    PQsetNoticeProcessor(
        client, [](void*, const char*) {}, nullptr);
    PGresult* const result = PQexec(client, sql.c_str());
    std::string answer = PQresultErrorMessage(result);
    for (int row = 0; row < PQntuples(result); ++row) {
      for (int column = 0; column < PQnfields(result); ++column) answer += PQgetvalue(result, row, column);
    }
    PQclear(result);
    PQfinish(client);
    return answer;
  }

 private:
  static constexpr int usualPort = 5432;

  static int statusOf(pid_t process) {
    int status = 1;
    waitpid(process, &status, 0);
    return status;
  }
  /// A port at which no program listens now.
  static int freePort() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    close(listener);
    return ntohs(address.sin_port);
  }
  /// In some containers only root may use /dev/null, and no server can be created without it. Then the child gets a
  /// /dev/null of its own.
  static void giveNull(const std::string& folder) {
    struct stat status {};
    if (geteuid() != 0 || (stat("/dev/null", &status) == 0 && (status.st_mode & 0666) == 0666)) return;
    const std::string own = folder + "/null";
    const mode_t mask = umask(0);
    mknod(own.c_str(), S_IFCHR | 0666, status.st_rdev);
    umask(mask);
    if (unshare(CLONE_NEWNS) == 0 && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0) {
      mount(own.c_str(), "/dev/null", "none", MS_BIND, nullptr);
    }
  }
  pid_t run(const std::vector<std::string>& arguments, int output) const {
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    const std::string& folder = folder_.path();
    const pid_t child = fork();
    if (child != 0) return child;
    giveNull(folder);
    if (geteuid() == 0 && (setgid(userWithoutRights) != 0 || setuid(userWithoutRights) != 0)) _exit(127);
    const int null = open("/dev/null", O_WRONLY);
    dup2(output >= 0 ? output : null, STDERR_FILENO);
    dup2(null, STDOUT_FILENO);
    execv(pointers[0], pointers.data());
    _exit(127);
  }
  void signalAll(int signal) const {
    const std::string id = std::to_string(process_);
    std::ifstream children("/proc/" + id + "/task/" + id + "/children");
    kill(process_, signal);
    for (pid_t child = 0; children >> child;) kill(child, signal);
  }

  TemporaryFolder folder_;
  pid_t process_ = -1;
  int output_ = -1;
  int port_ = usualPort;
  bool usesTls_ = false;
};

}  // namespace norvik::test
