// Signs standard input with the RSA key in a PEM file and checks the signature: rsa-sign KEY.pem <message
#include <fstream>
#include <iostream>
#include <iterator>

#include <ports/linux/OpenSslKeyServices.h>
#include <zentavo/rsa/PrivateKey.h>

using namespace zentavo;

int main(int argc, char** argv) {
    std::ifstream file(argc > 1 ? argv[1] : "");
    const std::string pem{std::istreambuf_iterator<char>(file), {}};
    const std::string message{std::istreambuf_iterator<char>(std::cin), {}};

    const linux_port::OpenSslKeyServices services; // the system's cryptography
    const auto key = rsa::PrivateKey::fromPEM(pem, services);
    if (!key) {
        std::cerr << "rsa-sign: " << key.error().message << '\n';
        return 1;
    }
    const auto signature = key->signText(message, rsa::Signature::pkcs1SHA256);
    if (!signature) {
        std::cerr << "rsa-sign: " << signature.error().message << '\n';
        return 1;
    }
    std::cout << *signature << '\n';
    const auto right = key->verifyText(message, *signature, rsa::Signature::pkcs1SHA256);
    return right.ok() && *right ? 0 : 1;
}
