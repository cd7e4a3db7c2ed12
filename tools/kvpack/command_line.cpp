#include "kvpack/command_line.h"

#include <ostream>

#include <CLI/CLI.hpp>

#include "kvpack/build_package.h"
#include "kvpack/description_options.h"
#include "kvpack/key_folder.h"
#include "kvpack/package_files.h"
#include "kvpack/show_package.h"
#include "kvpack/sign_package.h"
#include "kvpack/verify_package.h"

namespace {

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_BAD_ARGUMENTS = 2;

void addKeysOption(CLI::App& command, std::string& keys) {
    command.add_option("--keys", keys, "Folder of the private keys ed25519.key and kcdsa.key")
        ->type_name("DIR")
        ->required();
}

struct BuildCommand {
    PackageRecipe recipe;
    std::string keys;
    std::string output;

    void addTo(CLI::App& app, Failure& failure) {
        CLI::App& command = *app.add_subcommand("build", "Build one signed package");
        addDescriptionOptions(command, recipe.info, recipe.image, output);
        addEntryOption(command, "--depends", recipe.info.dependencies, "Needs NAME[:LOWEST[:HIGHEST]]");
        addEntryOption(command, "--provides", recipe.info.provides, "Stands in for NAME[:LOWEST[:HIGHEST[:PRIORITY]]]");
        addEntryOption(command, "--conflicts", recipe.info.conflicts, "Conflicts with NAME[:LOWEST[:HIGHEST]]");
        command.add_option("--tree", recipe.tree, "Directory to take in as the file tree")->type_name("DIR");
        addKeysOption(command, keys);
        command.add_flag_callback(
            "--short-signature", [this] { recipe.ed25519 = false; }, "Sign with EC-KCDSA only");
        command.add_flag_callback(
            "--sha1", [this] { recipe.sha256Marker = false; }, "Sign a SHA-1 digest: no SHA-256 marker");
        command.add_flag_callback(
            "--unrecorded", [this] { recipe.magic = UNRECORDED_MAGIC; },
            "Build a package that leaves no record in the database");
        command.callback([this, &failure] {
            SigningKeys signingKeys{};
            failure = loadSigningKeys(keys, signingKeys);
            if (!failure) failure = buildPackage(recipe, signingKeys, output);
        });
    }
};

struct BundleCommand {
    BundleRecipe recipe;
    std::string output;

    void addTo(CLI::App& app, Failure& failure) {
        CLI::App& command = *app.add_subcommand("bundle", "Join signed packages into a bundle");
        addDescriptionOptions(command, recipe.info, recipe.image, output);
        addEntryOption(command, "--disabled-member", recipe.disabledMembers, "NAME of a member to install disabled");
        command.add_option("members", recipe.members, "Package files, in install order")->type_name("FILE")->required();
        command.callback([this, &failure] { failure = buildBundle(recipe, output); });
    }
};

void addPackageArgument(CLI::App& command, std::string& path) {
    command.add_option("package", path, "Package file")->type_name("FILE")->required();
}

void addJsonOption(CLI::App& command, Form& form) {
    command.add_flag_callback(
        "--json", [&form] { form = Form::Json; }, "Print a JSON document");
}

struct ShowCommand {
    std::string path;
    Form form = Form::Text;

    void addTo(CLI::App& app, Failure& failure, std::ostream& out) {
        CLI::App& command = *app.add_subcommand("show", "Print every part of a package");
        addPackageArgument(command, path);
        addJsonOption(command, form);
        command.callback([this, &failure, &out] { failure = showPackage(path, form, out); });
    }
};

struct VerifyCommand {
    std::string path;
    std::string keys;
    Form form = Form::Text;

    void addTo(CLI::App& app, Failure& failure, std::ostream& out) {
        CLI::App& command =
            *app.add_subcommand("verify", "Check a package, and print which bytes its signature covers");
        addPackageArgument(command, path);
        command.add_option("--keys", keys, "Folder of the public keys ed25519.pub and kcdsa.pub to check against")
            ->type_name("DIR");
        addJsonOption(command, form);
        command.callback([this, &failure, &out] {
            PublicKeys publicKeys = trustedKeys();
            if (!keys.empty()) failure = loadPublicKeys(keys, publicKeys);
            if (!failure) failure = verifyPackage(path, publicKeys, form, out);
        });
    }
};

struct ListCommand {
    std::string path;
    Form form = Form::Text;

    void addTo(CLI::App& app, Failure& failure, std::ostream& out) {
        CLI::App& command = *app.add_subcommand("list", "Print the files of a package");
        addPackageArgument(command, path);
        addJsonOption(command, form);
        command.callback([this, &failure, &out] { failure = listPackageFiles(path, form, out); });
    }
};

struct ExtractCommand {
    std::string path;
    std::string directory;

    void addTo(CLI::App& app, Failure& failure) {
        CLI::App& command = *app.add_subcommand("extract", "Write the files of a package into a new directory");
        addPackageArgument(command, path);
        command.add_option("directory", directory, "Directory to make")->type_name("DIR")->required();
        command.callback([this, &failure] { failure = extractPackageFiles(path, directory); });
    }
};

struct KeygenCommand {
    std::string folder;

    void addTo(CLI::App& app, Failure& failure) {
        CLI::App& command = *app.add_subcommand("keygen", "Make a folder of fresh keys");
        command.add_option("folder", folder, "Folder to make")->type_name("DIR")->required();
        command.callback([this, &failure] { failure = makeKeyFolder(folder); });
    }
};

struct SignCommand {
    std::string path;
    std::string keys;
    std::string output;

    void addTo(CLI::App& app, Failure& failure) {
        CLI::App& command = *app.add_subcommand("sign", "Replace the signatures of a package");
        addPackageArgument(command, path);
        addKeysOption(command, keys);
        command.add_option("-o,--output", output, "Package file to write; the package itself if not given")
            ->type_name("FILE");
        command.callback([this, &failure] {
            SigningKeys signingKeys{};
            failure = loadSigningKeys(keys, signingKeys);
            if (!failure) failure = signPackage(path, signingKeys, output.empty() ? path : output);
        });
    }
};

}  // namespace

int runKvpack(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    CLI::App app("Builds, explains and signs Kestrion packages", "kvpack");
    app.require_subcommand(1);
    app.set_config("--description", "", "File with options of build and bundle, in sections [build] and [bundle]")
        ->type_name("FILE")
        ->configurable(false);
    app.allow_config_extras(CLI::config_extras_mode::error);
    app.fallthrough();
    Failure failure;
    BuildCommand build;
    BundleCommand bundle;
    ShowCommand show;
    VerifyCommand verify;
    ListCommand list;
    ExtractCommand extract;
    KeygenCommand keygen;
    SignCommand sign;
    build.addTo(app, failure);
    bundle.addTo(app, failure);
    show.addTo(app, failure, out);
    verify.addTo(app, failure, out);
    list.addTo(app, failure, out);
    extract.addTo(app, failure);
    keygen.addTo(app, failure);
    sign.addTo(app, failure);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        return app.exit(request, out, err);
    } catch (const CLI::ConfigError& error) {
        err << "kvpack: description file: " << error.what()
            << ": expected options of a command in its section [build] or [bundle]\n";
        return EXIT_BAD_ARGUMENTS;
    } catch (const CLI::ParseError& error) {
        err << "kvpack: " << error.what() << '\n';
        return EXIT_BAD_ARGUMENTS;
    }
    if (!failure) return 0;
    err << "kvpack: " << *failure << '\n';
    return EXIT_FAILED;
}
