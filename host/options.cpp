// SPDX-License-Identifier: Apache-2.0
#include "options.h"

#include "log/log.h"

#include <CLI/CLI.hpp>

namespace host
{
namespace
{

constexpr int wrongUsage = 2;
constexpr unsigned oneDay = 86400; // seconds

void addProviderOptions(CLI::App &app, Options &options)
{
    app.add_option("--mof", options.mofFiles, "Files with the class definitions (MOF)")
        ->check(CLI::ExistingFile);
    app.add_option("--registration", options.registrations, "Files that register the providers")
        ->check(CLI::ExistingFile);
    app.add_option("--profiles", options.profiles,
                   "Files that say which management profiles the classes conform to, for discovery")
        ->check(CLI::ExistingFile);
    app.add_option("--library-dir", options.libraryDirectories,
                   "Directories with the provider libraries; without, where the system looks");
    app.add_option("--library", options.library, "The provider library, whatever its place")
        ->check(CLI::ExistingFile);
    app.add_option("--namespace", options.nameSpace, "The CIM namespace")->capture_default_str();
    app.add_option("--provider-timeout", options.patienceSeconds,
                   "Seconds that a request waits for those before it to leave the providers")
        ->capture_default_str()
        ->check(CLI::Range(1u, oneDay));
    app.add_option(
           "--provider-calls", options.providerCalls,
           "Requests with the providers at a time; more than 1 only where the support library pairs each "
           "reply with its caller")
        ->capture_default_str()
        ->check(CLI::Range(1, 64));
    app.add_option("--provider-output", options.providerOutput,
                   "Where the standard output of the providers goes, request by request; without, nowhere");
    app.add_option("--provider-output-size", options.providerOutputBytes,
                   "Bytes after which that file is put aside, as FILE.1")
        ->capture_default_str()
        ->check(CLI::Range(std::uint64_t{4096}, std::uint64_t{1} << 40));
}

void addListeningOptions(CLI::App &app, Options &options)
{
    app.add_option("--address", options.http.address, "The numeric IP address to listen on for HTTP")
        ->capture_default_str();
    app.add_option("--port", options.http.port,
                   "The port for HTTP; 0: any free one, see the \"listening\" line")
        ->capture_default_str();
    app.add_flag("--no-http", options.noHttp, "HTTPS alone");
    app.add_flag("--insecure", options.insecure,
                 "Allows HTTP beyond this machine, where everybody on the way can read passwords");
    app.add_option("--https-address", options.https.address, "The numeric IP address to listen on for HTTPS")
        ->capture_default_str();
    app.add_option("--https-port", options.https.port, "The port for HTTPS; 0: any free one")
        ->capture_default_str();
    CLI::Option *certificate =
        app.add_option("--certificate", options.tls.certificateFile,
                       "The server's certificate (PEM), with those of its issuers behind it; turns HTTPS on")
            ->check(CLI::ExistingFile);
    CLI::Option *key = app.add_option("--key", options.tls.keyFile, "The certificate's key (PEM)")
                           ->check(CLI::ExistingFile)
                           ->needs(certificate);
    certificate->needs(key);
    app.add_option("--client-ca", options.tls.clientCaFile,
                   "Certificates (PEM) of those who issue the clients'; then a client needs one for HTTPS")
        ->check(CLI::ExistingFile)
        ->needs(certificate);
    app.add_option(
        "--server-name", options.serverNames,
        "Names by which clients address this server, besides this machine's and the certificate's; "
        "*: any");
}

void addLimits(CLI::App &app, Options &options)
{
    HttpLimits &limits = options.limits;
    app.add_option("--max-body", limits.bodyBytes, "Bytes of a request body at most")
        ->capture_default_str()
        ->check(CLI::Range(1024, 1 << 30));
    app.add_option("--max-memory", limits.memory, "Bytes that all requests together may use")
        ->capture_default_str()
        ->check(CLI::Range(std::size_t{1} << 20, std::size_t{1} << 31));
    app.add_option("--max-request-memory", limits.requestMemory, "Bytes that one request may use")
        ->capture_default_str()
        ->check(CLI::Range(std::size_t{1} << 18, std::size_t{1} << 31));
    app.add_option("--max-connections", limits.total, "Connections at most")
        ->capture_default_str()
        ->check(CLI::Range(1, 10000));
    app.add_option("--max-connections-per-address", limits.perAddress, "Connections of one address at most")
        ->capture_default_str()
        ->check(CLI::Range(1, 10000));
    app.add_option("--max-anonymous", limits.anonymous, "Connections without a login at most")
        ->capture_default_str()
        ->check(CLI::Range(1, 10000));
    app.add_option("--idle-timeout", options.idleSeconds, "Seconds after which a silent connection is closed")
        ->capture_default_str()
        ->check(CLI::Range(1u, oneDay));
    app.add_option("--login-timeout", options.loginSeconds, "Seconds that a client has until its login")
        ->capture_default_str()
        ->check(CLI::Range(1u, oneDay));
    app.add_option("--transfer-timeout", options.transferSeconds,
                   "Seconds that a client may take to send a request, or to take an answer")
        ->capture_default_str()
        ->check(CLI::Range(1u, oneDay));
    app.add_option("--free-failures", limits.logins.freeFailures,
                   "Wrong passwords after which an address is slowed")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000));
}

void addOperation(CLI::App &app, Options &options)
{
    app.add_option("--accounts", options.accounts, "The file with the accounts, user:hash:role");
    app.add_option("--audit", options.audit, "The file that says who changed what");
    app.add_option("--audit-size", options.auditLimits.bytes, "Bytes after which that file is put aside")
        ->capture_default_str()
        ->check(CLI::Range(std::uint64_t{4096}, std::uint64_t{1} << 40));
    app.add_option("--audit-files", options.auditLimits.files, "Files put aside that are kept")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000));
    app.add_option("--user", options.user,
                   "The user to become when started as root; display-host unless given, if there is one");
    app.add_option("--ready-file", options.readyFile, "Written when the server listens, with its URLs");
}

/** Commands and what they set the command to. */
struct Subcommand {
    CLI::App *app;
    Command command;
};

std::vector<Subcommand> addSubcommands(CLI::App &app, Options &options)
{
    CLI::App *account = app.add_subcommand("account", "Manages the accounts");
    account->require_subcommand(1);
    CLI::App *add = account->add_subcommand(
        "add", "Adds an account, or gives it a new password, which is the first line of standard input");
    add->add_option("--role", options.role,
                    "administrator, operator or reader; of a new account operator, unless given")
        ->check(CLI::IsMember(std::vector<std::string>(roleNames.begin(), roleNames.end())));
    CLI::App *remove = account->add_subcommand("remove", "Removes an account");
    CLI::App *list = account->add_subcommand("list", "Shows the accounts: name, role, locked or not");
    for (CLI::App *each : {add, remove, list}) {
        each->add_option("--accounts", options.accounts, "The file with the accounts")->required();
    }
    for (CLI::App *each : {add, remove}) {
        each->add_option("user", options.account, "The name of the user")->required();
    }
    CLI::App *certificate =
        app.add_subcommand("certificate", "Makes a key, and a certificate that it signs itself");
    certificate->add_option("--certificate", options.tls.certificateFile, "The file for the certificate")
        ->required();
    certificate->add_option("--key", options.tls.keyFile, "The file for the key")->required();
    certificate->add_flag("--replace", options.replaces, "Replaces files that are there");
    certificate->add_option("name", options.certificateNames,
                            "Names and addresses of the server, besides this machine's name and localhost");
    CLI::App *audit = app.add_subcommand("audit", "Looks after the audit log");
    audit->require_subcommand(1);
    CLI::App *verify = audit->add_subcommand("verify", "Finds the first altered, removed or added line");
    verify->add_option("file", options.audit, "The audit log")->required();
    return {{add, Command::accountAdd},
            {remove, Command::accountRemove},
            {list, Command::accountList},
            {certificate, Command::certificate},
            {verify, Command::auditVerify}};
}

} // namespace

std::optional<int> readOptions(int argc, char **argv, Options &options)
{
    CLI::App app("The object manager: loads CMPI providers and serves them over HTTP and HTTPS.");
    app.name("display-host");
    app.set_version_flag("--version", "display-host " DISPLAY_VERSION);
    app.set_config("--config", "", "A file with these options, one \"name = value\" a line");
    app.allow_config_extras(CLI::config_extras_mode::error);
    addProviderOptions(app, options);
    addListeningOptions(app, options);
    addLimits(app, options);
    addOperation(app, options);
    const std::vector<Subcommand> subcommands = addSubcommands(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &problem) {
        return app.exit(problem) == 0 ? 0 : wrongUsage;
    }
    for (const Subcommand &each : subcommands) {
        if (each.app->parsed()) {
            options.command = each.command;
            return std::nullopt;
        }
    }
    if (options.mofFiles.empty() || options.registrations.empty() || options.accounts.empty()) {
        logLine("--mof, --registration and --accounts are needed; see --help");
        return wrongUsage;
    }
    if (options.noHttp && options.tls.certificateFile.empty()) {
        logLine("--no-http needs --certificate and --key: else there is nothing to listen for");
        return wrongUsage;
    }
    options.limits.idle = std::chrono::seconds(options.idleSeconds);
    options.limits.transfer = std::chrono::seconds(options.transferSeconds);
    options.limits.login = std::chrono::seconds(options.loginSeconds);
    return std::nullopt;
}

} // namespace host
