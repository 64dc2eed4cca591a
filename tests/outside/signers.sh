# Signers of the tests, and what they do wrong. Sourced by a shell whose standard input is what is to be
# signed.
set -e
sign() { # KEY [SALT]
  openssl pkeyutl -sign -inkey "$1.pem" -pkeyopt digest:sha1 -pkeyopt rsa_padding_mode:pss \
    -pkeyopt "rsa_pss_saltlen:${2:-20}"
}
message() { # KEY HASH SALT: as for a message, which is hashed once more
  openssl dgst "-$2" -sign "$1.pem" -sigopt rsa_padding_mode:pss -sigopt "rsa_pss_saltlen:$3"
}
pkcs1() { openssl pkeyutl -sign -inkey "$1.pem" -pkeyopt digest:sha1; }
bare() { openssl pkeyutl -decrypt -inkey "$1.pem" -pkeyopt rsa_padding_mode:none; }
zeros() { head -c "$1" /dev/zero; }
reversed() { perl -0777 -pe '$_ = reverse'; }
hex() { od -An -v -t x1; }
bytes() { [ "$SCHEME" = 2.1 ] && echo 256 || echo 128; } # of a signature
