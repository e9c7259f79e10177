#!/bin/sh
# Makes a development set of credentials in the folder given (default: this script's own).
#
# The connection code works in a buffer of fixed size and its tests pin the length of every text,
# so each is made to measure: a key is generated until its text has the length wanted, a
# certificate's comment is filled up until its text has. The subjects consist of words that occur
# nowhere else in the program, so that a search for them in the built module means something.
set -eu

folder=$(cd "${1:-$(dirname "$0")}" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# From well before any clock that is merely slow until well after this program.
start=20200101000000Z
end=20600101000000Z

FILLING=
export FILLING
cat > "$work/config" <<'END'
[ca]
default_ca = issuer
[issuer]
new_certs_dir = .
database = index
serial = serial
unique_subject = no
default_md = sha256
policy = anything
[anything]
organizationName = supplied
commonName = supplied
[req]
distinguished_name = subject
[subject]
[authority]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
nsComment = $ENV::FILLING
[client]
basicConstraints = critical, CA:FALSE
keyUsage = critical, digitalSignature, keyEncipherment
extendedKeyUsage = clientAuth
nsComment = $ENV::FILLING
END

length() { wc -c < "$1" | tr -d ' '; }

fail() {
  echo "make-credentials: $1" >&2
  exit 1
}

# make_key FILE LENGTH: an RSA key of 2048 bits whose text has the length. Which length comes out is
# chance; 1674 is one of 1675 without its last line end.
make_key() {
  key_tries=0
  while :; do
    openssl genrsa -traditional -out "$work/key" 2048 2> /dev/null
    if [ "$(length "$work/key")" -eq "$2" ]; then
      cp "$work/key" "$1"
      break
    elif [ "$(length "$work/key")" -eq $(($2 + 1)) ]; then
      printf '%s' "$(cat "$work/key")" > "$1"
      break
    fi
    key_tries=$((key_tries + 1))
    [ "$key_tries" -lt 200 ] || fail "no key of $2 characters in 200 tries"
  done
}

# sign FILE KEY SUBJECT SECTION ISSUER...: a certificate; ISSUER is how `openssl ca` signs it.
sign() {
  sign_file=$1 sign_key=$2 sign_subject=$3 sign_section=$4
  shift 4
  openssl req -new -key "$sign_key" -subj "$sign_subject" -config "$work/config" \
    -out "$work/request"
  # A positive number of sixteen bytes always takes the same room.
  echo "5A$(openssl rand -hex 15)" > "$work/serial"
  : > "$work/index"
  (cd "$work" && openssl ca -batch -notext -config config -extensions "$sign_section" \
    -startdate "$start" -enddate "$end" -in request -out certificate "$@" 2> errors) ||
    fail "$(cat "$work/errors")"
  cp "$work/certificate" "$sign_file"
}

# make_certificate FILE LENGTH KEY NAME SECTION ISSUER...: `sign`, the comment filled up to measure.
make_certificate() {
  made=$1 wanted=$2 made_key=$3 name=$4 section=$5
  shift 5
  FILLING="Everybody has this key: for development only."
  export FILLING
  while :; do
    sign "$made" "$made_key" "/O=Rehearsal/CN=$name" "$section" "$@"
    [ "$(length "$made")" -ne "$wanted" ] || break
    [ "$(length "$made")" -lt "$wanted" ] || fail "$name passes $wanted characters"
    FILLING=${FILLING}.
  done
  echo "$(basename "$made"): $wanted characters"
}

# make_authority NAME LENGTH SUBJECT
make_authority() {
  authority_key=$folder/authority-keys/$1-ca-key.pem
  openssl genrsa -traditional -out "$authority_key" 2048 2> /dev/null
  make_certificate "$folder/$1-ca.pem" "$2" "$authority_key" "$3" authority \
    -selfsign -keyfile "$authority_key"
}

# make_client AUTHORITY NAME CERTIFICATE-LENGTH KEY-LENGTH SUBJECT
make_client() {
  make_key "$folder/$2-key.pem" "$4"
  make_certificate "$folder/$2-client.pem" "$3" "$folder/$2-key.pem" "$5" client \
    -cert "$folder/$1-ca.pem" -keyfile "$folder/authority-keys/$1-ca-key.pem"
}

mkdir -p "$folder/authority-keys"
make_authority production 1509 "Rehearsal Prompter"
make_authority test 1359 "Understudy Prompter"
make_client production production-linux 1367 1674 "Tragedian Penguin"
make_client production production-other 1367 1674 "Tragedian Otherwise"
make_client production jtest 1375 1675 "Tragedian Juniper"
make_client production itest 1375 1675 "Tragedian Ivory"
make_client production etest 1375 1675 "Tragedian Ebony"
make_client test localhost 1379 1679 "Understudy Hearth"
