// Hardware skinning, included before a vertex stage that is SKINNED: four bones a vertex.

attribute vec4 boneIndex;
attribute vec4 boneWeight;

uniform vec4 boneQuat[100]; // x, y, z, w
uniform vec3 boneTrans[100];

mat4 boneMatrix(int bone) {
    vec4 q = boneQuat[bone];
    vec4 q2 = 2.0 * q;
    float xx = q.x * q2.x;
    float yy = q.y * q2.y;
    float zz = q.z * q2.z;
    float xy = q.x * q2.y;
    float xz = q.x * q2.z;
    float yz = q.y * q2.z;
    float xw = q.w * q2.x;
    float yw = q.w * q2.y;
    float zw = q.w * q2.z;
    return mat4(vec4(1.0 - yy - zz, xy + zw, xz - yw, 0.0),
                vec4(xy - zw, 1.0 - xx - zz, yz + xw, 0.0),
                vec4(xz + yw, yz - xw, 1.0 - xx - yy, 0.0),
                vec4(boneTrans[bone], 1.0));
}

vec3 rotated(mat4 bone, vec3 vector) {
    return bone[0].xyz * vector.x + bone[1].xyz * vector.y + bone[2].xyz * vector.z;
}

// The vertex and its normal in the model's space, each the sum over its bones. The normal is not
// normalised.
void skin(out vec4 skinnedVertex, out vec3 skinnedNormal) {
    vec4 indices = boneIndex; // attributes cannot be written
    vec4 weights = boneWeight;
    skinnedVertex = vec4(0.0);
    skinnedNormal = vec3(0.0);
    for (int i = 0; i < 4; i++) {
        mat4 bone = boneMatrix(int(indices.x));
        skinnedVertex += bone * gl_Vertex * weights.x;
        skinnedNormal += rotated(bone, gl_Normal) * weights.x;
        indices = indices.yzwx;
        weights = weights.yzwx;
    }
}
